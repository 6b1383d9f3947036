#pragma once

class nxBarServices;
class nxMarketServices;
class nxNewsServices;
class nxOrderServices;
class nxOutputServices;
class nxStoreServices;
class nxTimerServices;

// The run around a job, by role. All that are given outlive the job; a role that the job's script does not
// use may be null.
struct nxHostServices
{
    nxMarketServices* markets = nullptr;
    nxTimerServices* timers = nullptr;
    nxOrderServices* orders = nullptr;
    nxBarServices* bars = nullptr;
    nxOutputServices* output = nullptr;
    nxNewsServices* news = nullptr;
    nxStoreServices* stores = nullptr;
};

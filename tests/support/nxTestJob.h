#pragma once

#include "scriptFramework/job/nxAlgoJobObject.h"

// The profile that the tests are about: each suite of scripts runs once in either, as the environment says.
nxScriptProfile nxGetTestedProfile();

// A job of that profile.
class nxTestJob : public nxAlgoJobObject
{
public:
    explicit nxTestJob(nxAlgoJobInterface* host) : nxAlgoJobObject(host) { SetProfile(nxGetTestedProfile()); }
};

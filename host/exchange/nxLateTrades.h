#pragma once

// Trades at the prices of own orders, and how many of them were recorded after the change of size that they
// caused, so that they were matched with it.
struct nxLateTrades
{
    unsigned long long all = 0;
    unsigned long long late = 0;

    nxLateTrades& operator+=(const nxLateTrades& other)
    {
        all += other.all;
        late += other.late;
        return *this;
    }
};

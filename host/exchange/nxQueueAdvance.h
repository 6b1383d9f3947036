#pragma once

// The rules by which orders move up in a queue; each is an nxQueueAdvance.

// Whoever cancelled stood anywhere: in proportion to what is ahead, rounded down.
constexpr unsigned int nxAdvanceEvenly(unsigned int ahead, unsigned int shown, unsigned int cancelled)
{
    return ahead - static_cast<unsigned int>(static_cast<unsigned long long>(cancelled) * ahead / shown);
}

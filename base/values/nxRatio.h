#pragma once

// A ratio of two whole numbers, left to right.
class nxRatio
{
public:
    nxRatio() = default;
    nxRatio(unsigned int lhs, unsigned int rhs) : _lhs(lhs), _rhs(rhs) {}

    unsigned int GetLHS() const { return _lhs; }
    unsigned int GetRHS() const { return _rhs; }

    bool operator==(const nxRatio&) const = default;

private:
    unsigned int _lhs = 0;
    unsigned int _rhs = 0;
};

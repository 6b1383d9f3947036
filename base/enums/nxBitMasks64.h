#pragma once

#include "base/enums/nxBitMask64.h"
#include "base/enums/nxNamedBitMask.h"

// The masks of 64 bits, as those of nxBitMasks.h.

class nxExtendedAttributeHighlightBitMask final
    : public nxNamedBitMask<nxBitMask64, unsigned long long, "nxExtendedAttributeHighlightBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxServerCapabilityBitMask final
    : public nxNamedBitMask<nxBitMask64, unsigned long long, "nxServerCapabilityBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxProductFlagBitMask final
    : public nxNamedBitMask<nxBitMask64, unsigned long long, "nxProductFlagBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxAccountNodeDefinitionFieldsBitMask final
    : public nxNamedBitMask<nxBitMask64, unsigned long long, "nxAccountNodeDefinitionFieldsBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxUserNodeDefinitionFieldsBitMask final
    : public nxNamedBitMask<nxBitMask64, unsigned long long, "nxUserNodeDefinitionFieldsBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

class nxAccountNodeFlagBitMask final
    : public nxNamedBitMask<nxBitMask64, unsigned long long, "nxAccountNodeFlagBitMask">
{
public:
    using nxNamedBitMask::nxNamedBitMask;
};

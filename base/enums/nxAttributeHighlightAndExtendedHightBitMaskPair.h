#pragma once

#include "base/enums/nxBitMasks64.h"
#include "base/enums/nxGenericBitMask.h"

// The highlighted attributes of a row: the first thirty in one mask, the later ones in another of 64 bits.
struct nxAttributeHighlightAndExtendedHightBitMaskPair  // sic
{
    nxGenericBitMask highlight;
    nxExtendedAttributeHighlightBitMask extendedHighlight;

    bool operator==(const nxAttributeHighlightAndExtendedHightBitMaskPair&) const = default;
};

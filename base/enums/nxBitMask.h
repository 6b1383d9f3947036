#pragma once

#include <string>

// Thirty flags (bits 0 to 29) in an unsigned 32-bit value, with bit 31 as the null mark and bit 30 as the
// no-change mark. A plain value. Concrete masks derive through nxNamedBitMask; nxGenericBitMask is the one
// without a meaning.
class nxBitMask
{
public:
    static constexpr unsigned int NullBit = 0x80000000u;
    static constexpr unsigned int NoChangeBit = 0x40000000u;

    virtual ~nxBitMask() = default;

    virtual bool IsValid() const;
    virtual bool IsNoChange() const;
    virtual bool IsNull() const;
    virtual void SetBits(const nxBitMask& bits);
    virtual void SetBits(unsigned int bits);
    // Both marks replace the whole value: the flags are gone.
    virtual void SetNull();
    virtual void SetNoChange();
    // The numbers of the set flags ("0,3"), or in the long form "bit 0,bit 3", joined by `separator`; "NULL"
    // and "NO_CHANGE" for the marks.
    virtual std::string GetShortDescription(const std::string& separator) const;
    virtual std::string GetLongDescription(const std::string& separator) const;
    virtual std::string GetClassName() const = 0;

    unsigned int GetValue() const { return _value; }
    void SetValue(unsigned int value) { _value = value; }
    void Clear() { _value = 0; }
    void ClearBits(unsigned int bits) { _value &= ~bits; }
    void ClearBits(const nxBitMask& bits) { ClearBits(bits._value); }
    bool AreAllBitsSet(unsigned int bits) const { return (_value & bits) == bits; }
    bool AreAllBitsSet(const nxBitMask& bits) const { return AreAllBitsSet(bits._value); }
    bool AreAnyBitsSet(unsigned int bits) const { return (_value & bits) != 0; }
    bool AreAnyBitsSet(const nxBitMask& bits) const { return AreAnyBitsSet(bits._value); }

    nxBitMask& operator=(const nxBitMask&) = default;
    nxBitMask& operator=(unsigned int value);
    nxBitMask& operator|=(const nxBitMask& bits);
    nxBitMask& operator|=(unsigned int bits);
    bool operator==(const nxBitMask& other) const { return _EqualTo(other._value); }
    bool operator==(unsigned int value) const { return _EqualTo(value); }
    bool operator!=(const nxBitMask& other) const { return _NotEqualTo(other._value); }
    bool operator!=(unsigned int value) const { return _NotEqualTo(value); }

protected:
    nxBitMask() = default;
    nxBitMask(unsigned int value) : _value(value) {}
    nxBitMask(const nxBitMask&) = default;

    bool _EqualTo(unsigned int value) const { return _value == value; }
    bool _NotEqualTo(unsigned int value) const { return _value != value; }

private:
    unsigned int _value = 0;
};

#pragma once

#include <string>

// Sixty-two flags (bits 0 to 61) in an unsigned 64-bit value, with bit 63 as the null mark and bit 62 as the
// no-change mark. A plain value. Concrete masks derive through nxNamedBitMask; nxGenericBitMask is the one
// without a meaning.
class nxBitMask64
{
public:
    static constexpr unsigned long long NullBit = 0x8000000000000000ull;
    static constexpr unsigned long long NoChangeBit = 0x4000000000000000ull;

    virtual ~nxBitMask64() = default;

    virtual bool IsValid() const;
    virtual bool IsNoChange() const;
    virtual bool IsNull() const;
    virtual void SetBits(const nxBitMask64& bits);
    virtual void SetBits(const unsigned long long& bits);
    // Both marks replace the whole value: the flags are gone.
    virtual void SetNull();
    virtual void SetNoChange();
    // The numbers of the set flags ("0,3"), or in the long form "bit 0,bit 3", joined by `separator`; "NULL"
    // and "NO_CHANGE" for the marks.
    virtual std::string GetShortDescription(const std::string& separator) const;
    virtual std::string GetLongDescription(const std::string& separator) const;
    virtual std::string GetClassName() const = 0;

    unsigned long long GetValue() const { return _value; }
    void SetValue(const unsigned long long& value) { _value = value; }
    void Clear() { _value = 0; }
    void ClearBits(const unsigned long long& bits) { _value &= ~bits; }
    void ClearBits(const nxBitMask64& bits) { ClearBits(bits._value); }
    bool AreAllBitsSet(const unsigned long long& bits) const { return (_value & bits) == bits; }
    bool AreAllBitsSet(const nxBitMask64& bits) const { return AreAllBitsSet(bits._value); }
    bool AreAnyBitsSet(const unsigned long long& bits) const { return (_value & bits) != 0; }
    bool AreAnyBitsSet(const nxBitMask64& bits) const { return AreAnyBitsSet(bits._value); }

    nxBitMask64& operator=(const nxBitMask64&) = default;
    nxBitMask64& operator=(const unsigned long long& value);
    nxBitMask64& operator|=(const nxBitMask64& bits);
    nxBitMask64& operator|=(const unsigned long long& bits);
    bool operator==(const nxBitMask64& other) const { return _EqualTo(other._value); }
    bool operator==(const unsigned long long& value) const { return _EqualTo(value); }
    bool operator!=(const nxBitMask64& other) const { return _NotEqualTo(other._value); }
    bool operator!=(const unsigned long long& value) const { return _NotEqualTo(value); }

protected:
    nxBitMask64() = default;
    nxBitMask64(const unsigned long long& value) : _value(value) {}
    nxBitMask64(const nxBitMask64&) = default;

    bool _EqualTo(const unsigned long long& value) const { return _value == value; }
    bool _NotEqualTo(const unsigned long long& value) const { return _value != value; }

private:
    unsigned long long _value = 0;
};

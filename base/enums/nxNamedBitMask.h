#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

// A class name as a template argument.
template <std::size_t length>
struct nxClassName
{
    char text[length];
    consteval nxClassName(const char (&name)[length]) { std::copy_n(name, length, text); }
};

// Makes a concrete mask of nxBitMask or nxBitMask64 (`Base`, with values of type `Value`): the public
// constructors, assignment, and the class's own name.
template <class Base, class Value, nxClassName name>
class nxNamedBitMask : public Base
{
public:
    nxNamedBitMask() = default;
    nxNamedBitMask(const nxNamedBitMask&) = default;
    nxNamedBitMask(Value value) : Base(value) {}

    nxNamedBitMask& operator=(const nxNamedBitMask&) = default;
    nxNamedBitMask& operator=(Value value)
    {
        this->SetValue(value);
        return *this;
    }

    std::string GetClassName() const override { return name.text; }
};

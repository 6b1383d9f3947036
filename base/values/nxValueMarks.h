#pragma once

#include <string>

// Tags that construct a value as one of its two marks.
struct nxNoChangeInitalizer  // sic
{
};
struct nxNullInitalizer  // sic
{
};

// The texts of the marks in logs. The second no-change text is the enumerations' own.
inline const std::string nxNullText = "NULL";
inline const std::string nxNoChangeText = "NO_CHANGE";
inline const std::string nxUndefinedText = "UNDEFINED";
inline const std::string nxNotRegisteredText = "NOT_REGISTERED";
inline const std::string nxEnumNoChangeText = "NO_CHANGE";

#pragma once

#include <span>
#include <string>
#include <string_view>

// A rule of the checker as authors know it. What is told of a number or a code never changes its meaning.
struct nxFindingRule
{
    unsigned int number;
    std::string_view code;  // the number's name
    std::string_view why;   // what is wrong about it, a sentence

    // By their numbers.
    static std::span<const nxFindingRule> GetAll();
    // code is one of them.
    static const nxFindingRule& Find(std::string_view code);
    // The numbers by their codes, as a statement over the table `checker` of the Lua files.
    static std::string GetNumbersText();

    // How an author silences it.
    std::string GetSilence() const;
};

#pragma once

#include <iosfwd>
#include <vector>

#include "host/check/nxScriptFinding.h"

// Writes down what a check found, which outlives it. Scripts, and so messages, need not be UTF-8; what is
// written is.
class nxFindingWriter
{
public:
    explicit nxFindingWriter(const std::vector<nxScriptFinding>& findings) : _findings(findings) {}

    // "file:line:column: message [number]".
    static void WriteLine(const nxScriptFinding&, std::ostream&);
    // Such a line for each, and after them a line for each number among them. As
    // the script has it: the one form that need not be UTF-8.
    void WriteText(std::ostream&) const;
    // One array of objects with the names of the finding's fields, and number, why and silence of its rule;
    // endColumn only where it is known.
    void WriteJson(std::ostream&) const;
    // A log of SARIF 2.1.0 with all rules of the checker.
    void WriteSarif(std::ostream&) const;

private:
    const std::vector<nxScriptFinding>& _findings;
};

#pragma once

#include <functional>
#include <string>
#include <vector>

// A row of a file of behaviour: what is done, and what it comes to. Such a file has lines "what => outcome",
// of which the part before the arrow may begin on earlier lines, and the outcome go on in lines that begin
// with
// "| ". Lines "--- section" and "=== section" stand before the rows of a section; empty lines and those that
// begin with # tell nothing.
struct nxRow
{
    std::string section;  // with its --- or ===
    std::string what;
    std::string outcome;
    int line = 0;  // of the arrow
};

// The rows of a file below tests/data.
std::vector<nxRow> nxReadRows(const std::string& name);

// Asks for what each row of a section comes to, and expects its outcome, in which " | " parts two lines. The
// section bears the name of the running test, or that, a blank and the part.
void nxExpectRows(const std::string& name, const std::function<std::string(const std::string& what)>& ask,
                  const std::string& part = {});

// The text without the blanks and line feeds around it.
std::string nxTrim(const std::string& text);

// The parts of a text between blanks, of which there may be several.
std::vector<std::string> nxGetWords(const std::string& text);

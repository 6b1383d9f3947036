#include "apps/algoserver/manual.h"

#include <algorithm>
#include <sstream>

namespace {

// Text as roff has to see it: a hyphen is a minus sign, so that options can be copied, and a point or an
// apostrophe at the begin of a line is no command.
std::string Escape(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        const bool isFirst = escaped.empty() || escaped.back() == '\n';
        if (isFirst && (c == '.' || c == '\'')) escaped += "\\&";
        if (c == '\\')
            escaped += "\\e";
        else if (c == '-')
            escaped += "\\-";
        else
            escaped += c;
    }
    return escaped;
}

std::string Bold(const std::string& text)
{
    return "\\fB" + Escape(text) + "\\fR";
}

// Paragraphs; lines that begin with blanks are those of a table, and stay lines.
std::string MakeParagraphs(const std::string& text)
{
    std::string roff;
    bool isOpen = false, isTable = false;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!isOpen && !line.empty()) roff += ".PP\n";
        isOpen = !line.empty();
        const bool belongs = line.starts_with(' ');
        if (belongs != isTable) roff += belongs ? ".nf\n" : ".fi\n";
        isTable = belongs;
        if (isOpen) roff += Escape(line) + "\n";
    }
    return roff + (isTable ? ".fi\n" : "");
}

std::string MakeOption(const CommandTree::Option& option)
{
    std::string roff = ".TP\n";
    for (const std::string& name : option.names)
        roff += (&name == &option.names.front() ? "" : ", ") + Bold(name);
    if (!option.value.empty()) roff += " \\fI" + Escape(option.value) + "\\fR";
    return roff + "\n" + Escape(option.about) + "\n";
}

std::string MakeOptions(const CommandTree& command)
{
    std::string roff, heading = "Options";
    if (!command.positionals.empty()) roff += ".SH ARGUMENTS\n";
    for (const CommandTree::Option& positional : command.positionals)
        roff += MakeOption(positional);
    roff += ".SH OPTIONS\n";
    for (const CommandTree::Option& option : command.options) {
        if (option.heading != heading) roff += ".SS " + Escape(option.heading) + "\n";
        heading = option.heading;
        roff += MakeOption(option);
    }
    return roff;
}

std::string MakeCommands(const CommandTree& command)
{
    std::string roff, pages;
    for (const CommandTree& inner : command.commands) {
        roff += ".TP\n" + Bold(inner.GetName()) + "\n" + Escape(inner.about) + "\n";
        pages += (pages.empty() ? ".BR " : " ,\n.BR ") + Escape(inner.Join("-")) + " (1)";
    }
    if (roff.empty()) return ".SH SEE ALSO\n.BR algoserver (1)\n";
    return ".SH COMMANDS\n" + roff + ".SH SEE ALSO\n" + pages + "\n";
}

}  // namespace

std::string MakeManualPage(const CommandTree& command)
{
    const std::string name = command.Join("-"), call = command.Join(" ");
    std::string title = name;
    std::ranges::transform(title, title.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    // What is said beyond the first line is a paragraph of its own.
    const std::size_t line = std::min(command.about.find('\n'), command.about.size());
    const std::string rest = command.about.substr(std::min(line + 1, command.about.size()));
    return ".TH " + Escape(title) + " 1 \"\" \"algoserver " NX_VERSION "\" \"User Commands\"\n.SH NAME\n" +
           Escape(name) + " \\- " + Escape(command.about.substr(0, line)) + "\n.SH SYNOPSIS\n" + Bold(call) +
           Escape(command.usage.substr(call.size())) + "\n" +
           (rest.empty() && command.footer.empty() ? "" : ".SH DESCRIPTION\n" + MakeParagraphs(rest)) +
           MakeParagraphs(command.footer) + MakeOptions(command) + MakeCommands(command);
}

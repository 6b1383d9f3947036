#include "apps/algoserver/commandTree.h"

#include <algorithm>
#include <iterator>

namespace {

using Values = CommandTree::Values;

std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (std::size_t end; (end = text.find(separator, begin)) != std::string::npos; begin = end + 1)
        parts.push_back(text.substr(begin, end - begin));
    parts.push_back(text.substr(begin));
    return parts;
}

bool IsWord(const std::string& text)
{
    return !text.empty() &&
           std::ranges::all_of(text, [](char c) { return (c >= 'a' && c <= 'z') || c == '-'; });
}

// "even|back|power[:POWER] [even]" names three words, "DURATION|FILE.csv" none; "{end,start}" is how the
// library writes the members of a set.
std::vector<std::string> FindChoices(const std::string& type, const std::string& text)
{
    const std::size_t open = type.find('{'), close = type.find('}');
    std::vector<std::string> choices;
    if (open != std::string::npos && close != std::string::npos)
        choices = Split(type.substr(open + 1, close - open - 1), ',');
    else if (const std::string words = text.substr(0, text.find(' ')); words.find('|') != std::string::npos)
        for (const std::string& part : Split(words, '|'))
            choices.push_back(part.substr(0, part.find('[')));
    return std::ranges::all_of(choices, IsWord) ? choices : std::vector<std::string>();
}

// The type without what checks add to a name of the library: "UINT:POSITIVE", but not "H:MM:SS".
std::string GetPlainType(const std::string& type)
{
    const std::string name = type.substr(0, type.find(':'));
    const bool isOfLibrary = name == "TEXT" || name == "UINT" || name == "INT" || name == "FLOAT";
    return isOfLibrary ? name : type;
}

std::string DescribeValue(const CLI::Option& option, const std::vector<std::string>& choices)
{
    if (!option.get_option_text().empty()) return option.get_option_text();
    std::string text;
    for (const std::string& choice : choices)
        text += (text.empty() ? "" : "|") + choice;
    if (choices.empty()) text = GetPlainType(option.get_type_name());
    if (option.get_expected_max() > 1) text += "...";
    if (!option.get_default_str().empty()) text += " [" + option.get_default_str() + "]";
    if (option.get_required()) text += " REQUIRED";
    return text;
}

Values FindValues(const CommandTree::Option& option)
{
    const auto holds = [&option](const char* text) { return option.value.find(text) != std::string::npos; };
    if (option.value.empty()) return Values::None;
    if (!option.choices.empty()) return Values::Choices;
    if (option.value.starts_with("[JOB/]NAME")) return Values::Parameters;
    if (option.value.starts_with("FILE.lua")) return Values::LuaFiles;
    if (holds("FILE") || holds("SCRIPT") || holds("RECORD")) return Values::Files;
    return holds("DIR") ? Values::Folders : Values::Any;
}

CommandTree::Option ReadOption(const CLI::Option& option)
{
    CommandTree::Option read;
    for (const std::string& name : option.get_snames())
        read.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        read.names.push_back("--" + name);
    if (read.names.empty()) read.names.push_back(option.get_name());
    read.heading = option.get_group();
    read.about = option.get_description();
    for (const CLI::Option* needed : option.get_needs())
        read.about += "; needs " + needed->get_name();
    if (option.get_expected_max() != 0 && option.get_type_size() != 0) {
        read.choices = FindChoices(option.get_type_name(), option.get_option_text());
        read.value = DescribeValue(option, read.choices);
    }
    read.values = FindValues(read);
    return read;
}

CommandTree ReadCommand(const CLI::App& app, const std::vector<std::string>& above)
{
    CommandTree tree;
    tree.path = above;
    tree.path.push_back(app.get_name());
    tree.about = app.get_description();
    tree.footer = app.get_footer();
    tree.usage = app.get_formatter()->make_help(&app, tree.Join(" "), CLI::AppFormatMode::Normal);
    tree.usage = tree.usage.substr(tree.usage.find("Usage: ") + 7);
    tree.usage = tree.usage.substr(0, tree.usage.find('\n'));
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_group().empty()) continue;
        (option->get_positional() ? tree.positionals : tree.options).push_back(ReadOption(*option));
    }
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        if (!command->get_group().empty()) tree.commands.push_back(ReadCommand(*command, tree.path));
    return tree;
}

}  // namespace

CommandTree CommandTree::Read(const CLI::App& app)
{
    return ReadCommand(app, {});
}

std::string CommandTree::Join(const char* separator) const
{
    std::string text;
    for (const std::string& name : path)
        text += (text.empty() ? "" : separator) + name;
    return text;
}

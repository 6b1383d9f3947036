#include "apps/algoserver/completion.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <map>

namespace {

using Values = CommandTree::Values;
using Option = CommandTree::Option;

constexpr const char* Origin =
    "# Made by `algoserver completion {}` of the commands and options that there are.\n";

void ForEach(const CommandTree& command, const std::function<void(const CommandTree&)>& visit)
{
    visit(command);
    for (const CommandTree& inner : command.commands)
        ForEach(inner, visit);
}

std::string JoinWords(const std::vector<std::string>& words, const char* separator = " ")
{
    return fmt::format("{}", fmt::join(words, separator));
}

// What stands in front of the first list, condition or second sentence.
std::string Shorten(const std::string& about)
{
    std::size_t end = about.find('\n');
    for (const char* mark : {": ", "; ", ". "})
        end = std::min(end, about.find(mark));
    return about.substr(0, end);
}

std::string Replace(std::string text, const std::string& what, const std::string& by)
{
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
        text.replace(at, what.size(), by);
    return text;
}

// As one word of a shell in which a quoted word cannot hold its quote.
std::string Quote(const std::string& text)
{
    return "'" + Replace(text, "'", "'\\''") + "'";
}

std::vector<std::string> GetNames(const std::vector<CommandTree>& commands)
{
    std::vector<std::string> names;
    for (const CommandTree& command : commands)
        names.push_back(command.GetName());
    return names;
}

// The words that a command takes beside options: its own commands, and the choices of its arguments.
std::vector<std::string> GetWords(const CommandTree& command)
{
    std::vector<std::string> words = GetNames(command.commands);
    for (const Option& positional : command.positionals)
        words.insert(words.end(), positional.choices.begin(), positional.choices.end());
    return words;
}

bool TakesFiles(const CommandTree& command)
{
    return std::ranges::any_of(command.positionals, [](const Option& option) {
        return option.values == Values::Files || option.values == Values::Folders;
    });
}

// --- bash

// What completes the value, before the shell function returns.
std::string GetBashAction(const Option& option)
{
    switch (option.values) {
        case Values::None:
        case Values::Any:
            return {};
        case Values::Choices:
            return fmt::format("_algoserver_offer '{}'\n        ", JoinWords(option.choices));
        case Values::Files:
            return "_algoserver_files -f\n        ";
        case Values::LuaFiles:
            return "_algoserver_files -f -X '!*.lua'\n        ";
        case Values::Folders:
            return "_algoserver_files -d\n        ";
        case Values::Parameters:
            return "_algoserver_parameters\n        ";
    }
    return {};
}

// --- zsh

// Text in an argument line of _arguments, of which colons and brackets are signs.
std::string EscapeZsh(const std::string& text)
{
    std::string escaped = Replace(text, "\\", "\\\\");
    for (const char* sign : {":", "[", "]"})
        escaped = Replace(escaped, sign, std::string("\\") + sign);
    return escaped;
}

std::string GetZshAction(const Option& option)
{
    switch (option.values) {
        case Values::None:
            return {};
        case Values::Any:
            return ":value: ";
        case Values::Choices:
            return fmt::format(":value:({})", JoinWords(option.choices));
        case Values::Files:
            return ":file:_files";
        case Values::LuaFiles:
            return ":file:_files -g \"*.lua\"";
        case Values::Folders:
            return ":folder:_files -/";
        case Values::Parameters:
            return ":parameter:_algoserver_parameters";
    }
    return {};
}

std::string GetFunction(const CommandTree& command)
{
    return "_" + command.Join("_");
}

// Offers the command's own commands.
std::string MakeZshCommands(const CommandTree& command)
{
    std::string text = GetFunction(command) + "_commands() {\n    local -a commands\n    commands=(";
    for (const CommandTree& inner : command.commands)
        text += "\n        " + Quote(inner.GetName() + ":" + Shorten(inner.about));
    return text + ")\n    _describe command commands\n" + (TakesFiles(command) ? "    _files\n}\n" : "}\n");
}

std::string MakeZshOptions(const Option& option)
{
    const std::string about = "[" + EscapeZsh(Shorten(option.about)) + "]" + GetZshAction(option);
    // One with a star may stand several times.
    const bool isOnce = option.values == Values::None || option.values == Values::Choices;
    const std::string begin = isOnce ? "(" + JoinWords(option.names) + ")" : "*";
    std::string text;
    for (const std::string& name : option.names)
        text += " \\\n        " + Quote(begin + name + about);
    return text;
}

std::string MakeZshCommand(const CommandTree& command)
{
    std::string text = command.commands.empty() ? "" : MakeZshCommands(command);
    text += GetFunction(command) + "() {\n";
    for (const CommandTree& inner : command.commands)
        text += fmt::format(
            "    [[ $CURRENT -gt 2 && $words[2] == {} ]] && {{ shift words; ((CURRENT--)); {}; return }}\n",
            inner.GetName(), GetFunction(inner));
    text += "    _arguments -s -S";
    for (const Option& option : command.options)
        text += MakeZshOptions(option);
    if (!command.commands.empty()) text += " \\\n        '1: :" + GetFunction(command) + "_commands'";
    if (TakesFiles(command)) text += " \\\n        '*:file:_files'";
    for (const Option& positional : command.positionals)
        if (positional.values == Values::Choices)
            text += " \\\n        " + Quote(fmt::format("*:value:({})", JoinWords(positional.choices)));
    return text + "\n}\n";
}

// --- fish

std::string QuoteFish(const std::string& text)
{
    return "'" + Replace(Replace(text, "\\", "\\\\"), "'", "\\'") + "'";
}

std::string GetFishAction(const Option& option)
{
    switch (option.values) {
        case Values::None:
            return {};
        case Values::Any:
            return " -x";
        case Values::Choices:
            return " -x -a " + QuoteFish(JoinWords(option.choices));
        case Values::Files:
            return " -r -F";
        case Values::LuaFiles:
            return " -x -a '(__fish_complete_suffix .lua)'";
        case Values::Folders:
            return " -x -a '(__fish_complete_directories)'";
        case Values::Parameters:
            return " -x -a '(__algoserver_parameters)'";
    }
    return {};
}

std::string MakeFishCommand(const CommandTree& command)
{
    const std::string begin =
        fmt::format("complete -c algoserver -n {}", QuoteFish("__algoserver_at " + command.Join(" ")));
    std::string text;
    for (const CommandTree& inner : command.commands)
        text += fmt::format("{} -a {} -d {}\n", begin, inner.GetName(), QuoteFish(Shorten(inner.about)));
    if (TakesFiles(command)) text += begin + " -F\n";
    for (const Option& positional : command.positionals)
        if (positional.values == Values::Choices)
            text += fmt::format("{} -a {}\n", begin, QuoteFish(JoinWords(positional.choices)));
    for (const Option& option : command.options) {
        text += begin;
        for (const std::string& name : option.names)
            text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
        text += fmt::format("{} -d {}\n", GetFishAction(option), QuoteFish(Shorten(option.about)));
    }
    return text;
}

// A template with what stands for each @NAME@ in it.
std::string Fill(std::string text, const std::map<std::string, std::string>& parts)
{
    for (const auto& [name, part] : parts)
        text = Replace(std::move(text), "@" + name + "@", part);
    return text;
}

}  // namespace

std::string MakeBashCompletion(const CommandTree& program)
{
    std::vector<std::string> paths;
    // Options of the same values share a line.
    std::map<std::string, std::vector<std::string>> places;
    std::string words;
    ForEach(program, [&](const CommandTree& command) {
        const std::string path = command.Join(" ");
        if (command.path.size() > 1) paths.push_back(Quote(path));
        std::vector<std::string> options;
        for (const Option& option : command.options) {
            options.insert(options.end(), option.names.begin(), option.names.end());
            for (const std::string& name : option.names)
                if (option.values != Values::None)
                    places[GetBashAction(option)].push_back(Quote(path + " " + name));
        }
        words += fmt::format("    {}) options='{}' words='{}' files={} ;;\n", Quote(path), JoinWords(options),
                             JoinWords(GetWords(command)), TakesFiles(command) ? "-f" : "");
    });
    std::string values;
    for (const auto& [action, options] : places)
        values += fmt::format("    {})\n        {}return\n        ;;\n", JoinWords(options, " | "), action);
    return Fill(GetBashCompletionText(),
                {{"COMMANDS", JoinWords(paths, " | ")}, {"VALUES", values}, {"WORDS", words}});
}

std::string MakeZshCompletion(const CommandTree& program)
{
    std::string commands;
    ForEach(program, [&commands](const CommandTree& command) { commands += MakeZshCommand(command); });
    return Fill(GetZshCompletionText(), {{"COMMANDS", commands}});
}

std::string MakeFishCompletion(const CommandTree& program)
{
    std::vector<std::string> paths;
    std::string options;
    ForEach(program, [&](const CommandTree& command) {
        if (command.path.size() > 1) paths.push_back(QuoteFish(command.Join(" ")));
        options += MakeFishCommand(command);
    });
    return Fill(GetFishCompletionText(), {{"COMMANDS", JoinWords(paths)}, {"OPTIONS", options}});
}

#include "host/sweep/nxSlurmWork.h"

#include <nlohmann/json.hpp>

#include "host/feed/nxSha256.h"

namespace {
constexpr int Format = 1;
}

std::string nxSlurmWork::GetHash() const
{
    std::string all;
    const auto add = [&all](const std::string& text) { all.append(text).push_back('\0'); };
    for (const std::string& argument : arguments)
        add(argument);
    for (const std::string* text : {&directory, &output, &version, &inputs})
        add(*text);
    return nxSha256::GetOfText(all);
}

std::optional<std::string> nxSlurmWork::GetText(std::string& text) const
{
    const nlohmann::ordered_json json = {
        {"format", Format},       {"version", version},     {"hash", GetHash()}, {"program", program},
        {"arguments", arguments}, {"directory", directory}, {"output", output},  {"inputs", inputs},
        {"runs", runs},           {"slices", slices},       {"chunk", chunk}};
    try {
        text = json.dump(2) + "\n";
    } catch (const nlohmann::json::type_error&) {
        return "a name on the command line is no UTF-8; give that file another name";
    }
    return std::nullopt;
}

std::optional<std::string> nxSlurmWork::SetFromText(const std::string& text)
{
    try {
        const auto json = nlohmann::json::parse(text);
        if (json.at("format") != Format) return "it is of another version of algoserver";
        json.at("version").get_to(version);
        json.at("program").get_to(program);
        json.at("arguments").get_to(arguments);
        json.at("directory").get_to(directory);
        json.at("output").get_to(output);
        json.at("inputs").get_to(inputs);
        json.at("runs").get_to(runs);
        json.at("slices").get_to(slices);
        json.at("chunk").get_to(chunk);
        if (json.at("hash") != GetHash() || slices == 0 || chunk == 0) return "it was changed";
    } catch (const nlohmann::json::exception& exception) {
        return std::string("it is damaged: ") + exception.what();
    }
    return std::nullopt;
}

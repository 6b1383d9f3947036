#include "host/debug/nxLaunch.h"

#include <stdexcept>

namespace {

using Json = nlohmann::json;

// A text, or a list of texts; none where there is no such argument.
std::vector<std::string> GetTexts(const Json& arguments, const char* name)
{
    const auto found = arguments.find(name);
    if (found == arguments.end() || found->is_null()) return {};
    if (found->is_string()) return {found->get<std::string>()};
    std::vector<std::string> texts;
    if (!found->is_array())
        throw std::runtime_error(std::string(name) + " is neither a text nor a list of texts");
    for (const Json& text : *found) {
        if (!text.is_string()) throw std::runtime_error(std::string(name) + " is no list of texts");
        texts.push_back(text.get<std::string>());
    }
    return texts;
}

bool GetBool(const Json& arguments, const char* name)
{
    const auto found = arguments.find(name);
    if (found == arguments.end() || found->is_null()) return false;
    if (!found->is_boolean()) throw std::runtime_error(std::string(name) + " is neither true nor false");
    return found->get<bool>();
}

void Append(std::vector<std::string>& to, const char* option, const std::vector<std::string>& values,
            bool isOnce)
{
    if (isOnce && !values.empty()) to.emplace_back(option);
    for (const std::string& value : values) {
        if (!isOnce) to.emplace_back(option);
        to.push_back(value);
    }
}

std::vector<std::string> GetParameters(const Json& arguments)
{
    const auto found = arguments.find("params");
    if (found == arguments.end() || found->is_null()) return {};
    if (!found->is_object()) throw std::runtime_error("params is no object of names and values");
    std::vector<std::string> texts;
    for (const auto& [name, value] : found->items())
        texts.push_back(name + "=" + (value.is_string() ? value.get<std::string>() : value.dump()));
    return texts;
}

}  // namespace

nxLaunch nxLaunch::Read(const Json& arguments)
{
    nxLaunch launch;
    launch.arguments = GetTexts(arguments, "program");
    Append(launch.arguments, "--data", GetTexts(arguments, "data"), true);
    Append(launch.arguments, "--module", GetTexts(arguments, "modules"), false);
    Append(launch.arguments, "--param", GetParameters(arguments), false);
    for (std::string& text : GetTexts(arguments, "args"))
        launch.arguments.push_back(std::move(text));
    for (const std::string& text : GetTexts(arguments, "cwd"))
        launch.folder = text;
    launch.stopsOnEntry = GetBool(arguments, "stopOnEntry");
    launch.isPlain = GetBool(arguments, "noDebug");
    launch.stopsOnEntry = launch.stopsOnEntry && !launch.isPlain;
    launch.stopsAtEnd = GetBool(arguments, "stopAtEnd") && !launch.isPlain;
    for (const Json& point : arguments.value("eventBreakpoints", Json::array()))
        launch.events.push_back(point.is_string() ? Json{{"name", point}} : point);
    return launch;
}

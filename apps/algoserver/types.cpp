#include "apps/algoserver/types.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>
#include <memory>

#include "host/author/nxScriptMembers.h"
#include "host/report/nxOutputFile.h"
#include "host/run/nxRunOptions.h"

namespace {

constexpr const char* Definitions = "algoserver.lua";

int Refuse(const std::string& text)
{
    std::cerr << "algoserver types: " << text << "\n";
    return static_cast<int>(nxRunResult::InputFailed);
}

std::optional<std::string> WriteFile(const std::filesystem::path& path, const std::string& text)
{
    nxOutputFile file("the definitions");
    if (auto error = file.Open(path.string())) return error;
    file.Write(text);
    return file.Close();
}

int WriteTypes(const std::filesystem::path& folder)
{
    nxScriptMembers members;
    std::string text, error;
    if (!members.Load(error) || !members.GetDefinitions(text, error)) return Refuse(error);
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure) return Refuse(folder.string() + ": " + failure.message());
    if (const auto unwritten = WriteFile(folder / Definitions, text)) return Refuse(*unwritten);
    // An author's own settings stay.
    const std::filesystem::path settings = folder / ".luarc.json";
    if (std::filesystem::exists(settings, failure)) return 0;
    if (const auto unwritten = WriteFile(settings, nxScriptMembers::GetSettings(Definitions)))
        return Refuse(*unwritten);
    return 0;
}

}  // namespace

void AddTypesCommand(CLI::App& app, int& status)
{
    const auto folder = std::make_shared<std::string>();
    CLI::App& types =
        *app.add_subcommand("types", "Write definitions of all that a script finds, for editors");
    types.footer(
        "Writes algoserver.lua, which the Lua Language Server reads, and beside it a .luarc.json that\n"
        "names it, unless there is one.");
    types
        .add_option("--output,-o", *folder,
                    "Folder to write to, mostly that of the scripts; it is made if need be")
        ->type_name("DIR")
        ->required();
    types.callback([folder, &status] { status = WriteTypes(*folder); });
}

#include "apps/algoserver/doctor.h"

#include <bzlib.h>
#include <fmt/format.h>
#include <lzma.h>
#include <seccomp.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>
#include <zstd.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <thread>

#include "apps/algoserver/colour.h"
#include "host/check/nxScriptAnalyzer.h"
#include "host/jobs/nxDataStores.h"
#include "host/sandbox/nxConfinement.h"
#include "host/sandbox/nxPathRules.h"
#include "scriptFramework/lua/nxLuaEngine.h"

namespace {

enum class State {
    Told,  // no more than a fact
    Good,
    Without,  // a run does without it
    Missing   // a run needs it
};

struct Row
{
    const char* name;
    State state;
    std::string text;
};

// What is wrong with a thing a run needs, or what there is of it.
Row Judge(const char* name, const std::optional<std::string>& fault, const std::string& text,
          State bad = State::Missing)
{
    return fault ? Row{name, bad, *fault} : Row{name, State::Good, text};
}

Row LookAtLua()
{
    nxLuaEngine engine;
    const bool runs = engine.LoadText("assert(_VERSION == 'Lua 5.1')");
    return Judge("Lua", runs ? std::nullopt : std::optional(engine.GetLastError()), NX_LUA);
}

std::string DescribeMemory()
{
    std::map<std::string, double> gibibytes;
    std::ifstream file("/proc/meminfo");
    std::string name, unit;
    for (double kibibytes = 0; file >> name >> kibibytes >> unit;)
        gibibytes[name] = kibibytes / 1024 / 1024;
    return gibibytes.contains("MemAvailable:")
               ? fmt::format("{:.1f} GiB, {:.1f} of them available", gibibytes["MemTotal:"],
                             gibibytes["MemAvailable:"])
               : "the system does not say";
}

// Null, or why this process cannot be confined; tried in one of its own, since there is no way back.
std::optional<std::string> TrySandbox()
{
    int pipes[2];
    if (pipe(pipes) != 0) return "no pipe can be made";
    const pid_t child = fork();
    if (child == 0) {
        nxConfinement confinement;
        confinement.descriptors = {pipes[1]};
        const std::string answer = confinement.Apply().value_or("confined");
        _exit(write(pipes[1], answer.data(), answer.size()) < 0);
    }
    close(pipes[1]);
    std::string answer(256, '\0');
    const ssize_t size = child < 0 ? 0 : read(pipes[0], answer.data(), answer.size());
    close(pipes[0]);
    if (child > 0) waitpid(child, nullptr, 0);
    answer.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    if (answer == "confined") return std::nullopt;
    return answer.empty() ? "the confined process died" : answer;
}

Row LookAtSandbox()
{
    const scmp_version* const library = seccomp_version();
    const int rules = nxPathRules::GetVersion();
    return Judge("sandbox", TrySandbox(),
                 fmt::format("seccomp {}.{}.{}, {}", library->major, library->minor, library->micro,
                             rules == 0 ? "no Landlock: strict runs can open all files that the user can"
                                        : fmt::format("Landlock ABI {}", rules)));
}

// Null, or why no file can be made there.
std::optional<std::string> TryToWrite(const std::filesystem::path& folder)
{
    std::string path = (folder / "algoserver-XXXXXX").string();
    const int file = mkstemp(path.data());
    if (file < 0) return fmt::format("{} cannot be written: {}", folder.string(), std::strerror(errno));
    close(file);
    unlink(path.c_str());
    return std::nullopt;
}

// Makes nothing: a directory that is not there needs one above it that can be written.
std::optional<std::string> TryStore(const std::string& directory)
{
    namespace fs = std::filesystem;
    const fs::path path = fs::absolute(directory).lexically_normal();
    std::error_code error;
    if (!fs::exists(path, error))
        return TryToWrite(path.has_filename() ? path.parent_path() : path.parent_path().parent_path());
    if (!fs::is_directory(path, error)) return directory + " is no directory";
    if (auto fault = TryToWrite(path)) return fault;
    nxDataStores stores;
    return fs::exists(path / "stores.sqlite", error) ? stores.Open(directory) : std::nullopt;
}

Row LookAtStore(const std::string& directory)
{
    const std::string library = std::string("SQLite ") + sqlite3_libversion();
    if (directory.empty()) return {"stores", State::Told, library + "; --store DIR tries a directory"};
    return Judge("stores", TryStore(directory), fmt::format("{}, {} can be written", library, directory));
}

Row LookAtCheck()
{
    nxScriptAnalyzer analyzer;
    std::string error;
    const bool loads = analyzer.Load(error);
    return Judge("check", loads ? std::nullopt : std::optional(error), "luacheck is there", State::Without);
}

std::vector<Row> LookAtAll(const std::string& store)
{
    const std::string temporary = std::filesystem::temp_directory_path().string();
    return {
        {"program", State::Told, "algoserver " NX_VERSION},
        LookAtLua(),
        {"cores", State::Told, std::to_string(std::max(1u, std::thread::hardware_concurrency()))},
        {"memory", State::Told, DescribeMemory()},
        LookAtSandbox(),
        LookAtStore(store),
        Judge("temporary", TryToWrite(temporary), temporary + " can be written", State::Without),
        LookAtCheck(),
        {"unpacking", State::Told,
         fmt::format(
             "gzip by zlib {}, zstd {}, xz {}, bzip2 {}, zip", zlibVersion(), ZSTD_versionString(),
             lzma_version_string(),
             std::string(BZ2_bzlibVersion()).substr(0, std::string_view(BZ2_bzlibVersion()).find(',')))},
    };
}

int Tell(const std::vector<Row>& rows)
{
    const bool isColoured = ShowsColours(STDOUT_FILENO);
    const auto mark = [isColoured](Colour colour, const char* word) {
        const std::string padded = fmt::format("{:<8}", word);
        return isColoured ? Paint(colour, padded) : padded;
    };
    bool isMissing = false;
    for (const Row& row : rows) {
        const std::string state = row.state == State::Good      ? mark(Colour::Green, "ok")
                                  : row.state == State::Without ? mark(Colour::Yellow, "without")
                                  : row.state == State::Missing ? mark(Colour::Red, "missing")
                                                                : std::string(8, ' ');
        std::cout << fmt::format("{:<12}{} {}\n", row.name, state, row.text);
        isMissing = isMissing || row.state == State::Missing;
    }
    return isMissing ? 1 : 0;
}

}  // namespace

void AddDoctorCommand(CLI::App& app, int& status)
{
    const auto store = std::make_shared<std::string>();
    CLI::App& doctor = *app.add_subcommand("doctor", "Tell what of this machine a run stands on");
    doctor.footer(
        "Exit status: 0 all that a run needs is there, 1 something that it needs is missing. What stands "
        "beside "
        "\"without\" is missing, too,\nbut a run does without it.");
    doctor
        .add_option("--store", *store,
                    "Directory for the data stores of runs that is tried, and left as it is")
        ->type_name("DIR");
    doctor.callback([store, &status] { status = Tell(LookAtAll(*store)); });
}

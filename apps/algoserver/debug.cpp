#include "apps/algoserver/debug.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>

#include "apps/algoserver/memory.h"
#include "apps/algoserver/run.h"
#include "apps/algoserver/runOptions.h"
#include "base/log/nxLogManager.h"
#include "host/debug/nxDebugSession.h"
#include "host/jobs/nxDataStores.h"
#include "host/run/nxRunFiles.h"
#include "host/sandbox/nxStrictLimits.h"

namespace {

constexpr int Failed = 2;
#ifdef NX_SCRIPTS_BECOME_CODE
constexpr bool scriptsBecomeCode = true;
#else
constexpr bool scriptsBecomeCode = false;
#endif

struct Arguments
{
    RunArguments run;
    std::string logLevel = "error";
    std::optional<unsigned int> port;
};

int Refuse(const std::string& text)
{
    std::cerr << "algoserver debug: " << text << "\n";
    return Failed;
}

// Those of the command "run", but for what a run that stands still and goes back cannot have.
void AddRunOptions(CLI::App& debug, Arguments& arguments)
{
    AddGroup(debug, "Scripts", [&] {
        AddScripts(debug, arguments.run);
        AddSandbox(debug, arguments.run.sandbox, "nothing but trade (strict)", "any; it does not count here");
    });
    AddGroup(debug, "Data", [&] { AddData(debug, arguments.run, false); });
    AddGroup(debug, "Orders", [&] {
        AddExchange(debug, arguments.run);
        AddRepeated(debug, "--explain", arguments.run.options.explain,
                    "Tell the story of the order with that number after the summary; may be repeated")
            ->type_name("ORDER_ID");
        AddAccount(debug, arguments.run.options);
    });
    AddGroup(debug, "Results", [&] { AddOutputs(debug, arguments.run.options, arguments.logLevel); });
}

// Empty, or what the run asks for that cannot be.
std::string FindObstacle(const nxRunOptions& options)
{
    std::vector<std::string> inputs = options.data;
    inputs.insert(inputs.end(), options.modules.begin(), options.modules.end());
    for (const nxJobOptions& job : options.jobs)
        inputs.push_back(job.script);
    for (const std::string& path : inputs)
        if (path == "-" || !nxRunFiles::CanBeReadAgain(path))
            return path + ": is a pipe, which cannot be read again when the run goes back";
    for (const std::string* path : {&options.recordFile, &options.jsonFile, &options.reportFile,
                                    &options.tradesFile, &options.equityFile})
        if (*path == "-") return "-: standard output is the debugger's";
    return {};
}

// The stores are not the run's to change: it begins with what they hold.
std::string TakeStores(nxRunOptions& options)
{
    if (options.storeDirectory.empty()) return {};
    try {
        options.storeImage = nxDataStores::TakeImage(options.storeDirectory);
    } catch (const std::exception& exception) {
        return exception.what();
    }
    return {};
}

// A copy of what was given on the command line takes what the launch says.
std::variant<nxRunOptions, std::string> MakeRun(Arguments arguments, const std::vector<std::string>& texts)
{
    CLI::App launch;
    AddRunOptions(launch, arguments);
    try {
        std::vector<std::string> reversed(texts.rbegin(), texts.rend());
        launch.parse(reversed);
    } catch (const CLI::Error& error) {
        return std::string(error.what());
    }
    if (arguments.run.jobs.scripts.empty()) return "no script: program is to name one";
    if (arguments.run.options.data.empty()) return "no data: data is to name recorded data";
    if (auto error = arguments.run.Finish()) return *error;
    nxRunOptions options = arguments.run.options;
    if (std::string obstacle = FindObstacle(options); !obstacle.empty()) return obstacle;
    if (std::string error = TakeStores(options); !error.empty()) return error;
    if (arguments.run.sandbox.isStrict) {
        options.profile = nxScriptProfile::Strict;
        options.limits = nxGetStrictLimits();
    }
    options.shortOfMemory = &GetShortOfMemory();
    nxLogManager::SetLevel(GetLogLevel(arguments.logLevel));
    return options;
}

// The one connection to a port of this machine; below 0: there is none, which is told.
int Accept(unsigned int port)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const name = reinterpret_cast<sockaddr*>(&address);
    if (listener < 0 || bind(listener, name, size) != 0 || listen(listener, 1) != 0 ||
        getsockname(listener, name, &size) != 0)
    {
        Refuse("--port " + std::to_string(port) + ": " + std::strerror(errno));
        return -1;
    }
    std::cout << "listening on 127.0.0.1:" << ntohs(address.sin_port) << std::endl;
    const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) Refuse(std::string("no connection: ") + std::strerror(errno));
    close(listener);
    return connection;
}

int Debug(const Arguments& arguments)
{
    if (scriptsBecomeCode)
        return Refuse(
            "this program was built with an engine that compiles scripts, which cannot be followed line by "
            "line");
    std::signal(SIGPIPE, SIG_IGN);
    const int input = arguments.port ? Accept(*arguments.port) : STDIN_FILENO;
    if (input < 0) return Failed;
    nxDapStream editor(input, arguments.port ? input : STDOUT_FILENO);
    nxDebugSession session(editor,
                           [&](const std::vector<std::string>& texts) { return MakeRun(arguments, texts); });
    return session.Run() ? 0 : Refuse(editor.GetFailure());
}

}  // namespace

void AddDebugCommand(CLI::App& app, int& status)
{
    const auto arguments = std::make_shared<Arguments>();
    CLI::App& debug = *app.add_subcommand("debug", "Let an editor debug a run, forwards and backwards");
    debug.footer(
        "Speaks the Debug Adapter Protocol on standard input and output, or on a port of this machine. What "
        "is\n"
        "given here holds where the editor's launch says nothing else (docs/debugging.md).");
    debug
        .add_option("--port", arguments->port,
                    "Wait for one connection to that port of 127.0.0.1, 0 for any free one, which is printed")
        ->check(CLI::Range(0u, 65535u))
        ->option_text("PORT");
    AddRunOptions(debug, *arguments);
    debug.callback([arguments, &status] { status = Debug(*arguments); });
}

#include "apps/algoserver/sweepCluster.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <set>

#include "apps/algoserver/arguments.h"
#include "host/sweep/nxSlurmScripts.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* Heading = "Cluster";
constexpr int Failed = 2;

int Refuse(const std::string& text)
{
    std::cerr << "algoserver sweep: " << text << "\n";
    return Failed;
}

// What a slice or the merge is given by itself, and what is for the submission alone.
bool IsPassedOn(const CLI::Option& option)
{
    static const std::set<std::string> own = {"output", "jobs",    "slice",  "take",
                                              "count",  "restart", "dry-run"};
    if (option.get_group() == Heading || option.count() == 0) return false;
    const auto& names = option.get_lnames();
    return names.empty() || own.count(names.front()) == 0;
}

// The command line once more. Scripts come first, since some options take all that follows.
std::vector<std::string> GetArguments(const CLI::App& sweep)
{
    std::vector<std::string> arguments = {"sweep"}, options;
    for (const CLI::Option* option : sweep.get_options()) {
        if (!IsPassedOn(*option)) continue;
        const bool isFlag = option->get_expected_max() == 0;
        const bool isLong = !option->get_lnames().empty();
        const std::string name = isLong                         ? "--" + option->get_lnames().front()
                                 : option->get_snames().empty() ? ""
                                                                : "-" + option->get_snames().front();
        for (const std::string& value : option->results()) {
            if (name.empty())
                arguments.push_back(value);
            else if (isFlag)
                options.push_back(name);
            else
                options.push_back(name + (isLong ? "=" : "") + value);
        }
    }
    arguments.insert(arguments.end(), options.begin(), options.end());
    return arguments;
}

struct ClusterArguments
{
    std::string folder;
    bool isJson = false;    // of status
    bool finishes = false;  // of merge
};

int TellStatus(const ClusterArguments& arguments, const nxSlurmSweep::CountRuns& count)
{
    nxSlurmStatus status;
    if (const auto fault = nxSlurmSweep(arguments.folder).GetStatus(status, count)) return Refuse(*fault);
    std::cout << (arguments.isJson ? status.GetJson() : status.GetText());
    return 0;
}

int MergeSweep(const ClusterArguments& arguments)
{
    int result = 0;
    if (const auto fault = nxSlurmSweep(arguments.folder).Merge(arguments.finishes, result))
        return Refuse(*fault);
    return result;
}

int CancelSweep(const ClusterArguments& arguments)
{
    const auto fault = nxSlurmSweep(arguments.folder).Cancel(std::cout);
    return fault ? Refuse(*fault) : 0;
}

CLI::App& AddCommand(CLI::App& sweep, ClusterArguments& arguments, const char* name, const char* help)
{
    CLI::App& command = *sweep.add_subcommand(name, help);
    command.add_option("folder", arguments.folder, "The folder that its submission told")
        ->required()
        ->option_text("DIR REQUIRED");
    return command;
}

}  // namespace

void AddSlurmOptions(CLI::App& sweep, SlurmArguments& arguments)
{
    nxSlurmOptions& slurm = arguments.options;
    const std::size_t before = sweep.get_options().size();
    CLI::Option* const asked = sweep.add_flag(
        "--slurm", arguments.isAsked, "Let a cluster that Slurm runs make the runs, as an array of jobs");
    std::vector<CLI::Option*> further = {
        sweep
            .add_option("--slurm-dir", arguments.folder,
                        "Folder for that, on a file system that all nodes share; without it the file of -o "
                        "with .slurm at its end")
            ->type_name("DIR"),
        sweep
            .add_option("--partition", slurm.partition,
                        "Which part of the cluster; this and the next as for sbatch")
            ->type_name("NAME"),
        sweep
            .add_option("--time", slurm.time,
                        "The most that a task may take; one that is not done then goes on later")
            ->type_name("H:MM:SS"),
        sweep.add_option("--mem", slurm.mem, "Memory of a task")->type_name("SIZE"),
        sweep.add_option("--cpus-per-task", slurm.cpusPerTask, "Cores of a task, each of which runs scripts")
            ->check(CLI::Range(1u, 4096u))
            ->capture_default_str(),
        sweep
            .add_option("--slurm-account", slurm.account,
                        "Whose share of the cluster it is, --account of sbatch")
            ->type_name("NAME"),
        sweep.add_option("--qos", slurm.qos, "Quality of service")->type_name("NAME"),
        sweep.add_option("--array-size", slurm.arraySize, "At most so many tasks")
            ->check(CLI::Range(1u, nxSlurmOptions::MostSlices))
            ->capture_default_str(),
        sweep
            .add_option("--slices", slurm.slices,
                        "So many tasks; without it as many as make one take some ten minutes")
            ->check(CLI::Range(1u, nxSlurmOptions::MostSlices)),
        sweep.add_option("--throttle", slurm.throttle, "At most so many tasks at a time")
            ->check(CLI::PositiveNumber),
        AddRepeated(sweep, "--slurm-arg", slurm.others,
                    "A further option of sbatch, such as --slurm-arg=--exclusive; may be repeated")
            ->type_name("OPTION")};
    for (CLI::Option* const option : further)
        option->needs(asked);
    const std::vector<CLI::Option*> options = sweep.get_options();
    for (std::size_t i = before; i < options.size(); ++i)
        options[i]->group(Heading);
}

int SubmitSweep(const CLI::App& sweep, const SlurmArguments& arguments, const SweepToSubmit& what)
{
    nxSlurmWork work;
    std::error_code failure;
    work.program = fs::read_symlink("/proc/self/exe", failure).string();
    if (!failure) work.directory = fs::current_path(failure).string();
    if (!failure) work.output = fs::absolute(what.output, failure).string();
    if (failure) return Refuse("the present directory is not known: " + failure.message());
    work.arguments = GetArguments(sweep);
    work.version = NX_VERSION;
    work.inputs = what.inputs;
    work.runs = what.runs;
    work.slices = arguments.options.GetSlices(what.runs, what.secondsPerRun);
    const std::string folder = arguments.folder.empty() ? what.output + ".slurm" : arguments.folder;
    if (const auto fault =
            nxSlurmSweep(folder).Submit(std::move(work), arguments.options, what.restarts, std::cout))
        return Refuse(*fault);
    std::cout << "algoserver sweep status " << nxSlurmScripts::GetCommand({folder}) << "\n";
    return 0;
}

void AddClusterCommands(CLI::App& sweep, int& status, const nxSlurmSweep::CountRuns& count)
{
    const auto arguments = std::make_shared<ClusterArguments>();
    CLI::App& tell = AddCommand(sweep, *arguments, "status", "Tell how far a sweep on a cluster is");
    tell.add_flag("--json", arguments->isJson, "As a JSON object");
    tell.callback([arguments, count, &status] { status = TellStatus(*arguments, count); });
    CLI::App& merge =
        AddCommand(sweep, *arguments, "merge", "Make one results file of its slices, here and now");
    merge.add_flag("--finish", arguments->finishes, "Make what is missing here, too");
    merge.callback([arguments, &status] { status = MergeSweep(*arguments); });
    AddCommand(sweep, *arguments, "cancel", "End its jobs; what is done is kept")
        .callback([arguments, &status] { status = CancelSweep(*arguments); });
}

// Makes the run of a command line three times over one reading of its data, in blocks of few events, so that
// what each copy leaves can be held against the run alone:
//
//   run_batch BLOCK SCRIPT... OPTIONS --data FILE...
//
// leaves out, json and jsonl files of each: batch0.out and so on. Status 77: the command line has an option
// that a batch is not for.

#include <fstream>
#include <iostream>

#include "apps/algoserver/runOptions.h"
#include "base/values/nxTextStream.h"
#include "host/check/nxScriptReview.h"
#include "host/run/nxRun.h"
#include "host/run/nxRunBatch.h"

namespace {

constexpr std::size_t Copies = 3;
constexpr int NotForBatches = 77;

int Run(std::size_t blockSize, const nxRunOptions& options)
{
    std::vector<nxTextStream> outs(Copies), errs(Copies);
    const std::vector<std::string> notes = nxScriptReview(options.jobs, options.modules).GetNotes();
    nxRunBatch batch(blockSize);
    for (std::size_t i = 0; i < Copies; ++i) {
        const std::string name = "batch" + std::to_string(i);
        nxRunOptions own = options;
        own.jsonFile = name + ".json";
        own.recordFile = name + ".jsonl";
        own.getNotes = [&notes] { return notes; };
        batch.Add(std::move(own), outs[i], errs[i]);
    }
    batch.Run([](std::size_t) {}, [](const nxRunBatch::End&) {});
    for (std::size_t i = 0; i < Copies; ++i)
        std::ofstream("batch" + std::to_string(i) + ".out", std::ios::binary) << outs[i].view();
    return 0;
}

}  // namespace

int main(int argc, char** argv)
{
    RunArguments arguments;
    std::string ignored;
    CLI::App command;
    AddScripts(command, arguments);
    AddData(command, arguments, true);
    AddExchange(command, arguments);
    AddAccount(command, arguments.options);
    AddRoundTrips(command, arguments.options);
    command.add_option("--json", ignored);
    command.add_option("--record", ignored);
    AddRepeated(command, "--explain", arguments.options.explain, "");
    try {
        command.parse(argc - 1, argv + 1);
    } catch (const CLI::ParseError&) {
        return NotForBatches;
    }
    if (const auto error = arguments.Finish()) {
        std::cerr << *error << "\n";
        return NotForBatches;
    }
    return Run(std::stoul(argv[1]), arguments.options);
}

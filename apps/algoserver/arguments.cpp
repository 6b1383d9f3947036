#include "apps/algoserver/arguments.h"

#include <charconv>

namespace {

std::string CheckSeed(const std::string& text)
{
    unsigned long long seed = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seed);
    return error == std::errc() && rest == end ? std::string()
                                               : text + " is no whole number from 0 to 18446744073709551615";
}

}  // namespace

void AddJobOptions(CLI::App& command, nxJobArguments& jobs)
{
    AddRepeated(command, "--name,-n", jobs.names,
                "Name of a job, in the order of the scripts; without it the file's name. May be repeated");
    AddRepeated(command, "--param", jobs.parameters,
                "Parameter of the job, or of all jobs; may be repeated. TYPE: decimal, uint, price, double, "
                "int, bool or text; without it as the value looks")
        ->type_name("[JOB/]NAME[:TYPE]=VALUE");
    AddRepeated(command, "--params", jobs.parameterFiles,
                "TOML file of parameters: [parameters] and [jobs.NAME]");
}

CLI::Option* AddSeed(CLI::App& command, unsigned long long& seed, const char* help)
{
    return command.add_option("--seed", seed, help)
        ->check(CLI::Validator(CheckSeed, ""))
        ->capture_default_str();
}

CLI::Validator IsNumber(double least, double most, const std::string& name)
{
    return {[=](const std::string& text) {
                double number = 0.0;
                return CLI::detail::lexical_cast(text, number) && number >= least && number <= most
                           ? std::string()
                           : text + " is no number " + name;
            },
            ""};
}

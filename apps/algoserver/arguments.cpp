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
                "Name of a job, in the order of the scripts; without it the file's name. May be repeated")
        ->type_name("NAME");
    AddRepeated(command, "--param", jobs.parameters,
                "Parameter of the job, or of all jobs; may be repeated. TYPE: decimal, uint, price, double, "
                "int, bool or text; without it as the value looks")
        ->type_name("[JOB/]NAME[:TYPE]=VALUE");
    AddRepeated(command, "--params", jobs.parameterFiles,
                "TOML file of parameters: [parameters] and [jobs.NAME]")
        ->type_name("FILE.toml");
}

std::chrono::nanoseconds SandboxArguments::GetCallbackLimit(bool isGuarded) const
{
    constexpr double usual = 10.0;
    const double seconds = callbackLimit.value_or(isGuarded ? usual : 0.0);
    return std::chrono::round<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds));
}

void AddSandbox(CLI::App& command, SandboxArguments& arguments, const std::string& strict,
                const std::string& withoutLimit)
{
    command
        .add_option_function<std::string>(
            "--sandbox", [&arguments](const std::string& name) { arguments.isStrict = name == "strict"; },
            "What a script may do: all that its author may whom you trust (base), or " + strict)
        ->check(CLI::IsMember({"base", "strict"}))
        ->option_text(arguments.isStrict ? "base|strict [strict]" : "base|strict [base]");
    command
        .add_option("--callback-limit", arguments.callbackLimit,
                    "Real seconds that a callback may take, 0 for any; without it " + withoutLimit)
        ->check(IsNumber(0, 1e6, "of seconds from 0 to 1000000"))
        ->option_text("SECONDS");
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

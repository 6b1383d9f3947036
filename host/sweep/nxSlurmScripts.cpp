#include "host/sweep/nxSlurmScripts.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace {

// What comes after the words of a sweep.
constexpr std::string_view Task = R"sh(most_requeues=10
slice=$(($1 + SLURM_ARRAY_TASK_ID))
name=$folder/slice-$slice

fail()
{
    echo "slice $slice: $1"
    echo "$1" >"$name.failed"
    exit 1
}

# Slurm tells this script alone that the time is nearly over; a SIGTERM has reached the sweep, too.
child= is_late= is_cancelled=
trap 'signalled=1; is_late=1; [ -z "$child" ] || kill -TERM "$child"' USR1
trap 'signalled=1; is_cancelled=1' TERM

rm -f "$name.done" "$name.failed"
cd "$directory" || fail 'the directory in which the sweep was started is not there on this node'
"${sweep[@]}" --slice "$slice/$slices" --jobs "${SLURM_CPUS_PER_TASK:-1}" -o "$name.db" &
child=$!
while :; do
    signalled=
    wait "$child"
    status=$?
    [ -n "$signalled" ] || break
done

if [ $status -eq 0 ]; then
    : >"$name.done"
elif [ -n "$is_cancelled" ]; then
    fail 'cancelled, or its time was over'
elif [ -z "$is_late" ] && [ $status -gt 128 ]; then
    fail "ended by signal $((status - 128))"
elif [ -z "$is_late" ]; then
    fail "exit status $status"
elif [ "${SLURM_RESTART_COUNT:-0}" -ge $most_requeues ]; then
    fail "its time was over $((most_requeues + 1)) times"
else
    echo "slice $slice: its time is over; it goes on later"
    scontrol requeue "$SLURM_JOB_ID" || fail 'its time was over, and Slurm does not start it again'
fi
)sh";

bool IsPlain(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0 ||
           std::string_view("-_./,:=+%@").find(character) != std::string_view::npos;
}

}  // namespace

std::string nxSlurmScripts::MakeTask(const nxSlurmFolder& folder, const nxSlurmWork& work)
{
    std::string text = "#!/bin/bash\n# One slice of a sweep; written by algoserver, which submits it.\n";
    text += "folder=" + Quote(folder.GetPath()) + "\ndirectory=" + Quote(work.directory);
    text += "\nsweep=(" + Quote(work.program);
    for (const std::string& argument : work.arguments)
        text += " " + Quote(argument);
    return text + ")\nslices=" + std::to_string(work.slices) + "\n" + std::string(Task);
}

std::string nxSlurmScripts::MakeMerge(const nxSlurmFolder& folder, const nxSlurmWork& work)
{
    return "#!/bin/bash\n# One file of the slices of a sweep; written by algoserver, which submits "
           "it.\nexec " +
           Quote(work.program) + " sweep merge " + Quote(folder.GetPath()) + "\n";
}

std::string nxSlurmScripts::Quote(const std::string& text)
{
    std::string word = "'";
    for (const char character : text) {
        if (character == '\'')
            word += "'\\''";
        else
            word += character;
    }
    return word + "'";
}

std::string nxSlurmScripts::GetCommand(const std::vector<std::string>& arguments)
{
    std::string command;
    for (const std::string& argument : arguments) {
        const bool isPlain = !argument.empty() && std::all_of(argument.begin(), argument.end(), IsPlain);
        command += (command.empty() ? "" : " ") + (isPlain ? argument : Quote(argument));
    }
    return command;
}

#pragma once

#include <functional>

#include "apps/algoserver/runOptions.h"

// Makes the run again whenever one of its files changes, until Ctrl-C. make() makes it, of the arguments as
// they are, in a process of its own, and gives its exit status. Gives that of the command.
int WatchRuns(const RunArguments& arguments, const std::function<int(RunArguments)>& make);

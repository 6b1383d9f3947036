#pragma once

#include <sys/types.h>

// A process of this program that never outlives the one which made it.
namespace nxBoundProcess {

// Its status where it ended before it began, since that one had gone.
constexpr int CannotBegin = 2;

// As fork: 0 in the child, below 0 where there is none. What is not written yet is written first, else both
// would write it. The child is killed when the parent's thread that made it ends. To be called while this is
// the only thread.
pid_t Fork();

}  // namespace nxBoundProcess

#include "host/sandbox/nxBoundProcess.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <iostream>

pid_t nxBoundProcess::Fork()
{
    std::cout.flush();
    std::fflush(nullptr);
    const pid_t parent = getpid();
    const pid_t child = fork();
    // Before the next line the parent may have gone.
    if (child == 0 && (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || getppid() != parent)) _exit(CannotBegin);
    return child;
}

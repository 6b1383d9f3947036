#include "host/debug/nxProcessCopy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace {

struct File
{
    int descriptor;
    int flags;
    off_t place;
};

// Descriptors are given out from below, so a long gap is the end. The first three are the caller's.
std::vector<File> ListFiles()
{
    constexpr int longestGap = 256;
    std::vector<File> files;
    for (int descriptor = STDERR_FILENO + 1, last = descriptor; descriptor - last < longestGap; ++descriptor)
    {
        const int flags = fcntl(descriptor, F_GETFL);
        if (flags < 0) continue;
        last = descriptor;
        struct stat status;
        if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode))
            files.push_back({descriptor, flags, lseek(descriptor, 0, SEEK_CUR)});
    }
    return files;
}

// Opened anew, a file has a place of its own; by its descriptor that works also where its name is gone.
bool Reopen(const File& file, nxProcessCopy::Writes writes)
{
    const int access = file.flags & O_ACCMODE;
    const bool isRead = access == O_RDONLY;
    const std::string path = !isRead && writes == nxProcessCopy::Writes::Nowhere
                                 ? "/dev/null"
                                 : "/proc/self/fd/" + std::to_string(file.descriptor);
    const int opened = open(path.c_str(), access | (file.flags & O_APPEND) | O_CLOEXEC);
    if (opened < 0) return false;
    bool isFine = lseek(opened, file.place, SEEK_SET) >= 0;
    if (!isRead && writes == nxProcessCopy::Writes::GoOn)
        isFine = ftruncate(opened, file.place) == 0 && isFine;
    isFine = dup3(opened, file.descriptor, O_CLOEXEC) >= 0 && isFine;
    close(opened);
    return isFine;
}

}  // namespace

pid_t nxProcessCopy::Make(Writes writes)
{
    const std::vector<File> files = ListFiles();
    const pid_t copy = fork();
    if (copy != 0) return copy;
    for (const File& file : files)
        if (!Reopen(file, writes)) _exit(1);
    return 0;
}

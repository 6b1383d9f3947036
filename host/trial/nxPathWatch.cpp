#include "host/trial/nxPathWatch.h"

#include <fnmatch.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace {

constexpr unsigned int FileMask = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;
constexpr unsigned int FolderMask = IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

bool IsPattern(const std::string& path)
{
    std::error_code ignored;
    return path.find_first_of("*?[") != path.npos && !std::filesystem::exists(path, ignored);
}

std::string GetFolder(const std::filesystem::path& path)
{
    return path.has_parent_path() ? path.parent_path().string() : ".";
}

std::string Join(const std::string& folder, const std::string& name)
{
    return folder == "." ? name : (std::filesystem::path(folder) / name).string();
}

// A name of a file, as a pattern that matches it alone.
std::string Quote(const std::string& name)
{
    std::string pattern;
    for (const char letter : name) {
        if (std::strchr("*?[\\", letter) != nullptr) pattern += '\\';
        pattern += letter;
    }
    return pattern;
}

}  // namespace

nxPathWatch::nxPathWatch(const std::vector<std::string>& paths, const std::vector<std::string>& outputs)
    : _descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)), _outputs(outputs)
{
    if (_descriptor < 0) _error = std::string("files cannot be watched: ") + std::strerror(errno);
    for (const std::string& path : paths)
        _Add(path);
    std::optional<std::string> ignored;
    _Attach(ignored);
    _isAttached = true;
}

nxPathWatch::~nxPathWatch()
{
    if (_descriptor >= 0) close(_descriptor);
}

void nxPathWatch::_Add(const std::string& path)
{
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        _targets.push_back({path, "*"});
        return;
    }
    const std::filesystem::path file(path);
    const std::string name = file.filename().string();
    _targets.push_back({GetFolder(file), IsPattern(path) ? name : Quote(name)});
    if (!std::filesystem::is_symlink(path, error)) return;
    if (const auto real = std::filesystem::canonical(path, error); !error)
        _targets.push_back({GetFolder(real), Quote(real.filename().string())});
}

void nxPathWatch::_Attach(std::optional<std::string>& changed)
{
    for (const Target& target : _targets) {
        if (_watches.contains(target.folder)) continue;
        const int watch = inotify_add_watch(_descriptor, target.folder.c_str(), FileMask | FolderMask);
        if (watch < 0) {
            if (errno == ENOSPC && !_error)
                _error = "there are too many watches (fs.inotify.max_user_watches)";
            continue;
        }
        _watches[target.folder] = watch;
        // What is in it may have come with it.
        if (_isAttached && !changed) changed = target.folder;
    }
}

std::optional<std::string> nxPathWatch::Take()
{
    std::optional<std::string> changed;
    _Read(changed);
    _Attach(changed);
    return changed;
}

void nxPathWatch::_Read(std::optional<std::string>& changed)
{
    alignas(inotify_event) char bytes[1 << 14];
    ssize_t size = 0;
    while ((size = read(_descriptor, bytes, sizeof bytes)) > 0) {
        for (const char* place = bytes; place < bytes + size;) {
            inotify_event event{};
            std::memcpy(&event, place, sizeof event);
            const std::string name = event.len == 0 ? "" : place + sizeof event;
            place += sizeof event + event.len;
            if ((event.mask & IN_MOVE_SELF) != 0) inotify_rm_watch(_descriptor, event.wd);
            if ((event.mask & IN_IGNORED) != 0) _Forget(event.wd, changed);
            if (!changed && (event.mask & FileMask) != 0) changed = _Find(event.wd, name);
            if (!changed && (event.mask & IN_Q_OVERFLOW) != 0) changed = "a file";
        }
    }
}

// The folder has gone, and what was in it.
void nxPathWatch::_Forget(int watch, std::optional<std::string>& changed)
{
    std::erase_if(_watches, [&](const auto& each) {
        if (each.second == watch && !changed) changed = each.first;
        return each.second == watch;
    });
}

std::optional<std::string> nxPathWatch::_Find(int watch, const std::string& name) const
{
    for (const Target& target : _targets) {
        const auto found = _watches.find(target.folder);
        if (found == _watches.end() || found->second != watch) continue;
        if (fnmatch(target.pattern.c_str(), name.c_str(), FNM_PERIOD) != 0) continue;
        if (std::string path = Join(target.folder, name); !_IsOutput(path)) return path;
    }
    return std::nullopt;
}

bool nxPathWatch::_IsOutput(const std::string& path) const
{
    const auto normal = [](const std::string& text) {
        std::error_code error;
        return std::filesystem::weakly_canonical(text, error);
    };
    return std::ranges::any_of(_outputs,
                               [&](const std::string& output) { return normal(output) == normal(path); });
}

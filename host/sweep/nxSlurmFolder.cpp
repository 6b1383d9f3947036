#include "host/sweep/nxSlurmFolder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>

#include "host/feed/nxSha256.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* WorkFile = "sweep.json";

// The 7 of slice-7.done; none of any other name.
std::optional<unsigned int> GetNumber(std::string_view name, std::string_view ending)
{
    constexpr std::string_view begin = "slice-";
    if (!name.starts_with(begin) || !name.ends_with(ending)) return std::nullopt;
    name.remove_prefix(begin.size());
    if (name.size() <= ending.size()) return std::nullopt;
    name.remove_suffix(ending.size());
    unsigned int number = 0;
    const auto [rest, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    return error == std::errc() && rest == name.data() + name.size() ? std::optional(number) : std::nullopt;
}

}  // namespace

nxSlurmFolder::nxSlurmFolder(fs::path path)
{
    // Jobs begin elsewhere, and are named by it: one way to write it.
    std::error_code failure;
    path = fs::absolute(path, failure);
    if (!failure) _path = fs::weakly_canonical(path, failure);
    if (failure) _path = path;
    if (!_path.has_filename()) _path = _path.parent_path();
}

nxSlurmFolder::~nxSlurmFolder()
{
    if (_lock >= 0) close(_lock);
}

std::optional<std::string> nxSlurmFolder::Lock(const std::string& deed)
{
    if (GetPath().find('\\') != std::string::npos)
        return fmt::format("{}: Slurm opens no files in a folder with a \\ in its path; name another one",
                           GetPath());
    std::error_code failure;
    fs::create_directories(_path, failure);
    const std::string file = GetFile(deed + ".lock").string();
    if (!failure) _lock = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (failure || _lock < 0)
        return fmt::format(
            "{}: cannot be written to: {}; name a folder of your own, on a file system that all nodes of the "
            "cluster "
            "share",
            _path.string(), failure ? failure.message() : std::strerror(errno));
    // Not where the file system has no locks.
    if (flock(_lock, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        return fmt::format("{}: another {} is under way there; try again when it has ended", _path.string(),
                           deed);
    return std::nullopt;
}

std::optional<std::string> nxSlurmFolder::Read(std::optional<nxSlurmWork>& work) const
{
    work.reset();
    const fs::path file = GetFile(WorkFile);
    std::ifstream stream(file, std::ios::binary);
    std::error_code failure;
    if (!stream && !fs::exists(file, failure) && !failure) return std::nullopt;
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (!stream) return fmt::format("{}: cannot be read", file.string());
    const auto fault = work.emplace().SetFromText(text);
    if (!fault) return std::nullopt;
    return fmt::format("{}: {}; submit with --restart, which makes the folder anew", file.string(), *fault);
}

std::optional<std::string> nxSlurmFolder::Write(const std::string& name, const std::string& text) const
{
    const fs::path file = GetFile(name), part = GetFile(name + ".part");
    std::ofstream stream(part, std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
    std::error_code failure;
    if (stream) fs::rename(part, file, failure);
    if (stream && !failure) return std::nullopt;
    return fmt::format("{}: cannot be written: {}", file.string(),
                       failure ? failure.message() : std::strerror(errno));
}

std::optional<std::string> nxSlurmFolder::NoteJob(const std::string& job, const std::string& what) const
{
    std::ofstream stream(GetFile("jobs.txt"), std::ios::app);
    stream << job << ' ' << what << '\n';
    stream.close();
    if (stream) return std::nullopt;
    return fmt::format("{}: cannot be written: {}; job {} runs", GetFile("jobs.txt").string(),
                       std::strerror(errno), job);
}

std::string nxSlurmFolder::ReadLine(const std::string& name) const
{
    std::ifstream stream(GetFile(name));
    std::string line;
    std::getline(stream, line);
    return line;
}

bool nxSlurmFolder::Has(const std::string& name) const
{
    std::error_code failure;
    return fs::exists(GetFile(name), failure);
}

void nxSlurmFolder::Remove(const std::string& name) const
{
    std::error_code failure;
    fs::remove(GetFile(name), failure);
}

void nxSlurmFolder::RemoveAll() const
{
    std::error_code failure;
    for (const auto& entry : fs::directory_iterator(_path, failure)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with("slice-") || name.starts_with("merge.") || name == WorkFile ||
            name == "jobs.txt")
            Remove(name);
    }
}

std::vector<nxSlurmFolder::Slice> nxSlurmFolder::GetSlices(unsigned int count) const
{
    std::vector<Slice> slices(count, Slice::Missing);
    std::vector<bool> hasResults(count, false);
    std::error_code failure;
    for (const auto& entry : fs::directory_iterator(_path, failure)) {
        const std::string name = entry.path().filename().string();
        if (const auto db = GetNumber(name, ".db"); db && *db < count) hasResults[*db] = true;
        if (const auto done = GetNumber(name, ".done"); done && *done < count) slices[*done] = Slice::Done;
        if (const auto failed = GetNumber(name, ".failed"); failed && *failed < count)
            slices[*failed] = Slice::Failed;
    }
    // Results that were lost are to be made again.
    for (unsigned int slice = 0; slice < count; ++slice)
        if (slices[slice] == Slice::Done && !hasResults[slice]) slices[slice] = Slice::Missing;
    return slices;
}

std::string nxSlurmFolder::GetJobName() const
{
    constexpr std::size_t digits = 12;
    return "sweep-" + nxSha256::GetOfText(_path.string()).substr(0, digits);
}

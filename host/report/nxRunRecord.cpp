#include "host/report/nxRunRecord.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>

namespace {

// What is printed from then on, by Lua's own print too, goes to standard error.
std::FILE* TakeStandardOutput()
{
    std::fflush(stdout);
    const int output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    if (output < 0 || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) return nullptr;
    return fdopen(output, "wb");
}

}  // namespace

std::optional<std::string> nxRunRecord::Open(const std::string& path)
{
    _path = path;
    _file.reset(path == "-" ? TakeStandardOutput() : std::fopen(path.c_str(), "wb"));
    if (_file == nullptr) _NoteFailure();
    return _failure;
}

void nxRunRecord::Write(const std::optional<std::string>& time, const std::string& job, const char* type,
                        Fields fields)
{
    nlohmann::ordered_json entry;
    entry["sequence"] = ++_sequence;
    if (time) {
        entry["time"] = *time;
    } else {
        entry["time"] = nullptr;
    }
    entry["job"] = job;
    entry["type"] = type;
    for (const Field& field : fields) {
        nlohmann::ordered_json& place = entry[field.name];
        std::visit(
            [&place](const auto& value) {
                if constexpr (std::is_pointer_v<std::remove_cvref_t<decltype(value)>>) {
                    if (value != nullptr) place = *value;
                } else {
                    place = value;
                }
            },
            field.value);
    }
    const std::string line = entry.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    if (std::fwrite(line.data(), 1, line.size(), _file.get()) != line.size()) _NoteFailure();
}

void nxRunRecord::_NoteFailure()
{
    if (!_failure) _failure = _path + ": the record cannot be written: " + std::strerror(errno);
}

std::optional<std::string> nxRunRecord::Close()
{
    if (_file != nullptr && std::fclose(_file.release()) != 0) _NoteFailure();
    return _failure;
}

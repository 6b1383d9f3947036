#include "host/sandbox/nxLeftOutput.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <sstream>
#include <string_view>

#include "host/report/nxJsonWriter.h"

namespace {

void WriteAll(int file, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = write(file, text.data(), text.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

std::string_view GetWaiting(const nxOutputBuffer& buffer)
{
    return {buffer.bytes, std::min(buffer.used.load(), nxOutputBuffer::Size)};
}

// Takes off what stands behind the last whole line, and gives that line, or the end of a long one.
std::string CutToLines(int file, long long begin)
{
    constexpr long long most = 1 << 20;
    const long long end = lseek(file, 0, SEEK_END);
    const long long from = std::max(begin, end - most);
    std::string tail(static_cast<std::size_t>(std::max(end - from, 0ll)), '\0');
    const ssize_t count = pread(file, tail.data(), tail.size(), from);
    tail.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    const std::size_t last = tail.rfind('\n');
    // A line that is longer than that stays as it is: nothing says where it begins.
    if (last == tail.npos) return {};
    tail.resize(last);
    if (ftruncate(file, from + static_cast<long long>(last) + 1) != 0) return {};
    lseek(file, 0, SEEK_END);
    return tail.substr(tail.rfind('\n') + 1);
}

// The recorded time of a line of the record; empty where it has none.
std::string_view GetTime(std::string_view line)
{
    constexpr std::string_view key = "\"time\":\"";
    const std::size_t begin = line.find(key);
    if (begin == line.npos) return {};
    line.remove_prefix(begin + key.size());
    return line.substr(0, line.find_first_not_of("0123456789:."));
}

}  // namespace

void nxLeftOutput::Write(int file, long long begin, const nxOutputBuffer& buffer)
{
    std::string_view waiting = GetWaiting(buffer);
    // Killed between the write and the note of it, the process had written some of it already.
    const long long end = begin < 0 ? -1 : lseek(file, 0, SEEK_END);
    const unsigned long long noted = buffer.written;
    if (const auto had = static_cast<unsigned long long>(end - begin); end >= begin && had > noted)
        waiting.remove_prefix(
            static_cast<std::size_t>(std::min<unsigned long long>(had - noted, waiting.size())));
    WriteAll(file, waiting);
}

void nxLeftOutput::FinishRecord(int file, long long begin, const nxOutputBuffer& buffer,
                                const std::string& why)
{
    Write(file, begin, buffer);
    std::string line;
    if (begin >= 0) {
        line = CutToLines(file, begin);
    } else if (std::string_view waiting = GetWaiting(buffer); waiting.ends_with('\n')) {
        waiting.remove_suffix(1);
        line = waiting.substr(waiting.rfind('\n') + 1);
    }
    const std::string_view time = GetTime(line);
    std::ostringstream text;
    nxJsonWriter json(text);
    json.BeginObject();
    json.Key("sequence").Count(buffer.pieces + 1);
    json.Key("time");
    time.empty() ? json.Null() : json.Text(time);
    json.Key("job").Text("");
    json.Key("type").Text("end");
    json.Key("end").Text(why);
    json.Key("isCut").Bool(true);
    json.EndObject();
    text << "\n";
    WriteAll(file, text.view());
}

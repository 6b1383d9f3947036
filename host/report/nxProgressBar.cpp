#include "host/report/nxProgressBar.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <limits>

namespace {

constexpr std::size_t MostCells = 30;
constexpr std::size_t FewestCells = 5;

// Columns of the terminal but the last: a character there makes some begin a new line. Asked anew for each
// line, since a window can change its size.
std::size_t GetWidth()
{
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return std::numeric_limits<std::size_t>::max();
    return size.ws_col - 1u;
}

bool BeginsCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xc0) != 0x80;
}

std::size_t CountColumns(const std::string& text)
{
    return static_cast<std::size_t>(std::ranges::count_if(text, BeginsCharacter));
}

// The text as far as it fits.
std::string Cut(const std::string& text, std::size_t width)
{
    std::size_t columns = 0, end = 0;
    while (end < text.size() && (!BeginsCharacter(text[end]) || columns++ < width))
        ++end;
    return text.substr(0, end);
}

// "[=====     ]  50 %" and the text, with as many cells as there is room for; without the bar where it is
// short.
std::string DrawBar(double done, const std::string& text, std::size_t width)
{
    const std::string figures = fmt::format("{:3.0f} %{}", done * 100, text);
    const std::size_t taken = CountColumns(figures) + 3;  // brackets and a blank
    if (width < taken + FewestCells) return figures;
    const std::size_t cells = std::min(MostCells, width - taken);
    const auto filled = std::min(cells, static_cast<std::size_t>(done * static_cast<double>(cells)));
    return fmt::format("[{:=<{}}{:<{}}] {}", "", filled, "", cells - filled, figures);
}

}  // namespace

nxProgressBar::nxProgressBar(std::ostream& out, bool enabled, const std::string& label)
    : _out(out), _enabled(enabled), _label(label.empty() ? label : label + "  ")
{
}

void nxProgressBar::Update(unsigned long long events, unsigned long long bytes, unsigned long long total)
{
    if (!_enabled) return;
    const auto now = std::chrono::steady_clock::now();
    if (now < _next) return;
    _next = now + std::chrono::milliseconds(100);
    const double elapsed = std::chrono::duration<double>(now - _start).count();
    const double rate = static_cast<double>(events) / elapsed;
    const std::string line =
        fmt::format("{} {}, {:.0f} per second", events, events == 1 ? "event" : "events", rate);
    if (total == 0 || bytes == 0) return Show(line);

    const double done = static_cast<double>(bytes) / static_cast<double>(total);
    const std::string left = fmt::format(", {:.0f} s left", elapsed * (1 - done) / done);
    const std::size_t width = GetWidth(), label = CountColumns(_label);
    const std::size_t room = width - std::min(width, label);
    const std::string whole = DrawBar(done, fmt::format("  {}{}", line, left), room);
    // Events and rate go first where it is narrow: how far the run is, and how long it takes, is what is
    // looked for.
    const bool fits = whole.front() == '[' && CountColumns(whole) <= room;
    Show(fits ? whole : DrawBar(done, left, room));
}

void nxProgressBar::Show(const std::string& text)
{
    if (!_enabled) return;
    _out << "\r\033[K" << Cut(_label + text, GetWidth()) << std::flush;
    _drawn = true;
}

void nxProgressBar::Erase()
{
    if (!_drawn) return;
    _out << "\r\033[K" << std::flush;
    _drawn = false;
}

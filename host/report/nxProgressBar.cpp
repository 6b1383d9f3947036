#include "host/report/nxProgressBar.h"

#include <fmt/format.h>

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
    std::string line =
        fmt::format("{} {}, {:.0f} per second", events, events == 1 ? "event" : "events", rate);
    if (total != 0 && bytes != 0) {
        const double done = static_cast<double>(bytes) / static_cast<double>(total);
        constexpr int width = 30;
        const int filled = static_cast<int>(done * width);
        line = fmt::format("[{:=<{}}{:<{}}] {:3.0f} %  {}, {:.0f} s left", "", filled, "", width - filled,
                           done * 100, line, elapsed * (1 - done) / done);
    }
    Show(line);
}

void nxProgressBar::Show(const std::string& text)
{
    if (!_enabled) return;
    _out << "\r\033[K" << _label << text << std::flush;
    _drawn = true;
}

void nxProgressBar::Erase()
{
    if (!_drawn) return;
    _out << "\r\033[K" << std::flush;
    _drawn = false;
}

#pragma once

#include <chrono>
#include <ostream>
#include <string>

// One line on a terminal that tells how far a run is: events, percent by bytes read, rate and time left.
// Draws at most ten times a second, and is erased before anything else is written. It stays one line at any
// width of the terminal of standard error: what finds no room is left out.
class nxProgressBar
{
public:
    // Draws nothing unless enabled: a pipe or a file wants no such line. The label goes in front.
    nxProgressBar(std::ostream& out, bool enabled, const std::string& label = {});
    ~nxProgressBar() { Erase(); }
    nxProgressBar(const nxProgressBar&) = delete;
    nxProgressBar& operator=(const nxProgressBar&) = delete;

    // total 0: unknown, as of a pipe.
    void Update(unsigned long long events, unsigned long long bytes, unsigned long long total);
    // Another line in its place.
    void Show(const std::string& text);
    void Erase();
    bool IsEnabled() const { return _enabled; }

private:
    std::ostream& _out;
    bool _enabled;
    std::string _label;
    bool _drawn = false;
    std::chrono::steady_clock::time_point _start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point _next = _start + std::chrono::milliseconds(300);
};

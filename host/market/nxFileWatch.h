#pragma once

#include <chrono>
#include <filesystem>
#include <string>

// Tells when a file was written anew, by its time of modification and its size, at most once in an interval
// of real time. A file that is away is not written anew.
class nxFileWatch
{
public:
    nxFileWatch(std::string path, std::chrono::milliseconds interval)
        : _path(std::move(path)), _interval(interval), _seen(_Look())
    {
    }

    const std::string& GetPath() const { return _path; }

    [[nodiscard]] bool HasChanged()
    {
        const auto now = std::chrono::steady_clock::now();
        if (now < _next) return false;
        _next = now + _interval;
        const Look look = _Look();
        if (!look.isThere || look == _seen) return false;
        _seen = look;
        return true;
    }

private:
    struct Look
    {
        bool isThere = false;
        std::filesystem::file_time_type time;
        std::uintmax_t size = 0;
        bool operator==(const Look&) const = default;
    };

    Look _Look() const
    {
        std::error_code error;
        Look look;
        look.time = std::filesystem::last_write_time(_path, error);
        look.size = error ? 0 : std::filesystem::file_size(_path, error);
        look.isThere = !error;
        return look;
    }

    const std::string _path;
    const std::chrono::milliseconds _interval;
    Look _seen;
    std::chrono::steady_clock::time_point _next = std::chrono::steady_clock::now() + _interval;
};

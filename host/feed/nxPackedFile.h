#pragma once

#include <string>
#include <string_view>

// A .zst that is written block by block, each a frame of its own, and open only meanwhile: so any number of
// them may be written at the same time. Used by one thread.
class nxPackedFile
{
public:
    // Emptied with the first block.
    explicit nxPackedFile(std::string path) : _path(std::move(path)) {}

    [[nodiscard]] bool Write(std::string_view text);
    // Writes what is left; afterwards the file is whole.
    [[nodiscard]] bool Finish();
    const std::string& GetPath() const { return _path; }
    // Why one of them was false: "FILE: reason".
    const std::string& GetError() const { return _error; }

private:
    bool _WriteBlock();

    static constexpr std::size_t BlockSize = 1 << 20;
    std::string _path;
    std::string _text;
    bool _isBegun = false;
    std::string _error;
};

#include "host/feed/nxPackedFile.h"

#include <zstd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

bool nxPackedFile::Write(std::string_view text)
{
    _text += text;
    return _text.size() < BlockSize || _WriteBlock();
}

bool nxPackedFile::Finish()
{
    return (_text.empty() && _isBegun) || _WriteBlock();
}

bool nxPackedFile::_WriteBlock()
{
    constexpr int level = 3;
    std::string packed(ZSTD_compressBound(_text.size()), '\0');
    packed.resize(ZSTD_compress(packed.data(), packed.size(), _text.data(), _text.size(), level));
    std::FILE* const file = std::fopen(_path.c_str(), _isBegun ? "ab" : "wb");
    const bool isWritten =
        file != nullptr && std::fwrite(packed.data(), 1, packed.size(), file) == packed.size();
    const int failure = errno;
    const bool isClosed = file != nullptr && std::fclose(file) == 0;
    if (!isWritten || !isClosed)
        _error = _path + ": cannot be written: " + std::strerror(isWritten ? errno : failure);
    _isBegun = true;
    _text.clear();
    return isWritten && isClosed;
}

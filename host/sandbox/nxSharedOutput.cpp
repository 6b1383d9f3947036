#include "host/sandbox/nxSharedOutput.h"

#include <unistd.h>

nxSharedOutput::nxSharedOutput(nxOutputBuffer& buffer) : _isTerminal(isatty(STDOUT_FILENO) != 0)
{
    _file.OpenDescriptor(STDOUT_FILENO, buffer);
}

bool nxSharedOutput::_Write(const char* bytes, std::size_t size)
{
    const std::scoped_lock lock(_mutex);
    const std::string_view text(bytes, size);
    _file.Write(text);
    if (_isTerminal && text.find('\n') != text.npos) _file.Flush();
    return !_file.HasFailed();
}

std::streamsize nxSharedOutput::xsputn(const char* bytes, std::streamsize size)
{
    return _Write(bytes, static_cast<std::size_t>(size)) ? size : 0;
}

nxSharedOutput::int_type nxSharedOutput::overflow(int_type character)
{
    if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
    const char byte = traits_type::to_char_type(character);
    return _Write(&byte, 1) ? character : traits_type::eof();
}

int nxSharedOutput::sync()
{
    const std::scoped_lock lock(_mutex);
    _file.Flush();
    return _file.HasFailed() ? -1 : 0;
}

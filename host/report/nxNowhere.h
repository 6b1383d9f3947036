#pragma once

#include <streambuf>

// Takes all that is written and keeps nothing: a stream without any buffer would count as one that cannot be
// written, which ends a run.
class nxNowhere : public std::streambuf
{
protected:
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
    std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
};

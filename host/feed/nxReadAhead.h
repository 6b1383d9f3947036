#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

class nxInputStream;

// The bytes of a stream, read and unpacked ahead by a thread, a few pieces of fixed size far: unpacking may
// take as long as all that is done with the rows. Used by one thread beside its own; throws only what the
// stream threw, for want of memory.
class nxReadAhead
{
public:
    // The stream outlives it and is nobody else's meanwhile.
    explicit nxReadAhead(nxInputStream& stream);
    ~nxReadAhead();
    nxReadAhead(const nxReadAhead&) = delete;
    nxReadAhead& operator=(const nxReadAhead&) = delete;

    // As those of the stream, which is farther.
    [[nodiscard]] long long Read(char* to, std::size_t size);
    [[nodiscard]] const std::string& GetFailure() const { return _failure; }
    [[nodiscard]] unsigned long long GetBytesConsumed() const { return _consumed; }

private:
    struct Piece
    {
        std::unique_ptr<char[]> bytes;
        long long count = 0;              // as the stream's Read answered
        unsigned long long consumed = 0;  // of the file, with this piece
    };
    static constexpr std::size_t Count = 4;
    static constexpr std::size_t Size = 128 * 1024;

    void _Run();
    bool _WaitForRoom(std::size_t next);
    void _Fill(Piece& piece);
    // The piece that bytes are taken of; one without bytes is the last.
    const Piece& _WaitForPiece();

    nxInputStream& _stream;
    std::array<Piece, Count> _pieces;  // a ring
    std::size_t _taken = 0;            // bytes of the piece at _freed
    unsigned long long _consumed = 0;
    std::string _failure;
    std::exception_ptr _thrown;  // on the thread; told by the last piece
    std::mutex _mutex;           // guards the next three
    std::size_t _filled = 0;     // pieces ever filled and ever given back, each at its count in the ring
    std::size_t _freed = 0;
    bool _isLeaving = false;
    std::condition_variable _changed;
    std::thread _thread;
};

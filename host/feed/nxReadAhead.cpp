#include "host/feed/nxReadAhead.h"

#include <algorithm>
#include <cstring>

#include "host/feed/nxInputStream.h"

nxReadAhead::nxReadAhead(nxInputStream& stream) : _stream(stream), _consumed(stream.GetBytesConsumed())
{
    _thread = std::thread([this] { _Run(); });
}

nxReadAhead::~nxReadAhead()
{
    {
        const std::lock_guard lock(_mutex);
        _isLeaving = true;
    }
    _changed.notify_all();
    _thread.join();
}

// False: nobody wants more.
bool nxReadAhead::_WaitForRoom(std::size_t next)
{
    std::unique_lock lock(_mutex);
    _changed.wait(lock, [&] { return _isLeaving || next - _freed < Count; });
    return !_isLeaving;
}

void nxReadAhead::_Fill(Piece& piece)
{
    try {
        if (!piece.bytes) piece.bytes = std::make_unique_for_overwrite<char[]>(Size);
        piece.count = _stream.Read(piece.bytes.get(), Size);
        piece.consumed = _stream.GetBytesConsumed();
    } catch (...) {
        _thrown = std::current_exception();
        piece.count = -1;
    }
}

void nxReadAhead::_Run()
{
    for (std::size_t next = 0; _WaitForRoom(next); ++next) {
        Piece& piece = _pieces[next % Count];
        _Fill(piece);
        const bool isLast = piece.count <= 0;
        {
            const std::lock_guard lock(_mutex);
            _filled = next + 1;
        }
        _changed.notify_all();
        if (isLast) return;
    }
}

const nxReadAhead::Piece& nxReadAhead::_WaitForPiece()
{
    std::unique_lock lock(_mutex);
    _changed.wait(lock, [this] { return _filled != _freed; });
    return _pieces[_freed % Count];
}

long long nxReadAhead::Read(char* to, std::size_t size)
{
    const Piece& piece = _WaitForPiece();
    if (piece.count <= 0) {
        if (_thrown) std::rethrow_exception(_thrown);
        _failure = _stream.GetFailure();  // the thread has ended
        return piece.count;
    }
    const std::size_t count = std::min(size, static_cast<std::size_t>(piece.count) - _taken);
    std::memcpy(to, piece.bytes.get() + _taken, count);
    _taken += count;
    _consumed = piece.consumed;
    if (_taken == static_cast<std::size_t>(piece.count)) {
        _taken = 0;
        {
            const std::lock_guard lock(_mutex);
            ++_freed;
        }
        _changed.notify_all();
    }
    return static_cast<long long>(count);
}

#include "host/feed/nxCsvReader.h"

#include <algorithm>
#include <cstring>

nxCsvReader::nxCsvReader(std::string path, const std::atomic<bool>* interrupted, nxFileFormOptions options,
                         bool readsAhead)
    : _path(path),
      _readsAhead(readsAhead),
      _stream([this, interrupted] { return _isLeaving || (interrupted != nullptr && *interrupted); }),
      _parser(std::move(path), std::move(options))
{
}

nxCsvReader::~nxCsvReader()
{
    {
        const std::lock_guard lock(_mutex);
        _isLeaving = true;
    }
    if (!_thread.joinable()) return;
    _changed.notify_all();
    _thread.join();
}

bool nxCsvReader::Open()
{
    _error = &_current->error;
    if (!_stream.Open(_path)) {
        _current->error = {_path, 0, 0, _stream.GetFailure()};
        return false;
    }
    do {
        // All of it, for the look ahead; later a pipe's rows are handed on as they come.
        _Fill(*_current, nxCsvBlock::Size);
        if (_current->begin == _current->end) {
            if (_current->state == nxCsvBlock::State::Last)
                _current->error = {_path, 0, 0, "no header row: the file is empty"};
            return false;
        }
        if (!_parser.ReadHeader(*_current, _stream.GetEntryName())) return false;
    } while (!_parser.HasHeader());
    if (_parser.GetForm().isNewestFirst && !_TurnAround()) return false;
    _parser.Parse(*_current, FirstRows);
    return true;
}

nxCsvReader::Result nxCsvReader::Next()
{
    if (_position == _current->count) {
        const Result result = _NextRows();
        if (result != Result::Row) return result;
    }
    _row = &_current->rows[_position++];
    if (!_row->isBad) [[likely]]
        return Result::Row;
    _error = &_current->refusals[_refusal++];
    return Result::Bad;
}

// Row: there is one.
nxCsvReader::Result nxCsvReader::_NextRows()
{
    constexpr std::size_t atOnce = 64;  // rows, which stay in the nearest of the processor's caches
    while (_position == _current->count) {
        if (_current->begin == _current->end) {
            if (_current->state == nxCsvBlock::State::Last) return Result::End;
            if (_current->state == nxCsvBlock::State::Failed) {
                if (_thrown) std::rethrow_exception(_thrown);
                _error = &_current->error;
                return Result::Failed;
            }
            _skipped += _current->skipped;
            _readsAhead ? _WaitForNext(_freed + 1) : _FillNext();
        }
        if (!_readsAhead || _current->begin != _current->end) {
            if (_current->rows.size() > atOnce) _current->rows = std::vector<nxCsvRow>(atOnce);
            _parser.Parse(*_current, atOnce);
        }
        _position = _refusal = 0;
    }
    return Result::Row;
}

void nxCsvReader::_WaitForNext(std::size_t next)
{
    if (!_thread.joinable()) _thread = std::thread([this] { _ReadAhead(); });
    std::unique_lock lock(_mutex);
    _freed = next;
    if (_filled - _freed <= BlockCount / 2) _changed.notify_all();
    _changed.wait(lock, [&] { return next != _filled; });
    _current = &_blocks[next % BlockCount];
}

void nxCsvReader::_FillNext()
{
    if (_unpacksAhead) _Unpack();
    _Fill(*_current, 1);
}

// On a thread of its own from now on.
void nxCsvReader::_Unpack()
{
    if (!_unpacked && _stream.IsPacked() && !_turned) _unpacked.emplace(_stream);
}

void nxCsvReader::_ReadAhead()
{
    for (std::size_t next = 1;; ++next) {
        {
            std::unique_lock lock(_mutex);
            if (next - _freed == BlockCount)
                _changed.wait(lock, [&] { return _isLeaving || next - _freed <= BlockCount / 2; });
            if (_isLeaving) return;
        }
        nxCsvBlock& block = _blocks[next % BlockCount];
        try {
            _Unpack();
            _Fill(block, 1);
            _parser.Parse(block);
        } catch (...) {
            _thrown = std::current_exception();
            block.count = 0;
            block.begin = block.end;
            block.state = nxCsvBlock::State::Failed;
        }
        bool isWaiting;
        const bool isLast = block.state != nxCsvBlock::State::More;
        {
            const std::lock_guard lock(_mutex);
            _filled = next + 1;
            isWaiting = next == _freed;
        }
        if (isWaiting) _changed.notify_all();
        if (isLast) return;
    }
}

// Reads until the block has at least one whole line and that many bytes, or is full, or the stream is over.
// It takes no more at once than `least` or a step: rows that a thread has just parsed are better found in the
// processor's cache than read ahead by the thousand.
void nxCsvReader::_Fill(nxCsvBlock& block, std::size_t least)
{
    if (!block.text)
        block.text = std::make_unique_for_overwrite<char[]>(nxCsvBlock::Size + nxCsvBlock::Padding);
    char* const begin = block.text.get();
    std::memcpy(begin, _rest.data(), _rest.size());
    char* filled = begin + _rest.size();
    char* const full = begin + nxCsvBlock::Size;
    block.begin = block.end = begin;
    block.state = nxCsvBlock::State::More;
    block.hasOpenEnd = false;
    block.skipped = 0;
    while (!_isStreamOver && filled != full &&
           (block.end == begin || static_cast<std::size_t>(filled - begin) < least))
    {
        const auto room = static_cast<std::size_t>(full - filled);
        const long long count = _ReadText(filled, std::min(room, std::max(least, nxCsvBlock::Step)));
        _isStreamOver = count <= 0;
        if (count > 0) {
            const void* lastEnd = memrchr(filled, '\n', static_cast<std::size_t>(count));
            filled += count;
            if (lastEnd != nullptr) block.end = static_cast<const char*>(lastEnd) + 1;
        } else if (count == 0 && block.end != filled) {
            *filled++ = '\n';  // the padding has room for it
            block.end = filled;
            block.hasOpenEnd = true;
        }
    }
    block.bytesConsumed = _unpacked ? _unpacked->GetBytesConsumed() : _stream.GetBytesConsumed();
    _rest.assign(block.end, static_cast<const char*>(filled));
    const auto countLines = [&] {
        return _parser.GetLineCount() +
               static_cast<unsigned long long>(std::count(block.begin, block.end, '\n'));
    };
    if (!_GetFailure().empty()) {
        const unsigned long long line = countLines();
        block.state = nxCsvBlock::State::Failed;
        block.error = {_path, line, 0, _GetFailure()};
        if (line != 0) block.error.reason += "; line " + std::to_string(line) + " is the last whole one";
    } else if (_isStreamOver) {
        block.state = nxCsvBlock::State::Last;
    } else if (block.end == begin) {
        block.state = nxCsvBlock::State::Failed;
        block.error = {_path, countLines() + 1, 0,
                       "row longer than " + std::to_string(nxCsvBlock::Size) + " bytes"};
    }
}

long long nxCsvReader::_ReadText(char* to, std::size_t size)
{
    if (!_turned) return _unpacked ? _unpacked->Read(to, size) : _stream.Read(to, size);
    const std::size_t count = _turned->copy(to, size, _turnedPosition);
    _turnedPosition += count;
    return static_cast<long long>(count);
}

const std::string& nxCsvReader::_GetFailure() const
{
    return _unpacked ? _unpacked->GetFailure() : _stream.GetFailure();
}

// Reads what is left of the file and begins anew with its last line. Such files are of days, not of ticks.
bool nxCsvReader::_TurnAround()
{
    constexpr std::size_t most = std::size_t{1} << 30;
    std::string text(_current->begin, _current->end);
    text += _rest;
    std::vector<char> buffer(nxCsvBlock::Size);
    for (long long count = 0; !_isStreamOver && (count = _stream.Read(buffer.data(), buffer.size())) > 0;) {
        text.append(buffer.data(), static_cast<std::size_t>(count));
        if (text.size() < most) continue;
        _current->error = {
            _path, 0, 0,
            "the newest rows come first, and the file is too large to turn around; sort it by time"};
        return false;
    }
    if (!_stream.GetFailure().empty()) {
        _current->error = {_path, 0, 0, _stream.GetFailure()};
        return false;
    }
    if (!text.ends_with('\n')) text += '\n';
    _parser.CountDown(static_cast<unsigned long long>(std::ranges::count(text, '\n')));
    _turned.emplace().reserve(text.size());
    for (std::size_t end = text.size(); end > 0;) {
        const std::size_t before = end < 2 ? text.npos : text.rfind('\n', end - 2);
        const std::size_t begin = before == text.npos ? 0 : before + 1;
        _turned->append(text, begin, end - begin);
        end = begin;
    }
    _rest.clear();
    _isStreamOver = false;
    _Fill(*_current, nxCsvBlock::Size);
    return true;
}

#include "host/feed/nxImport.h"

#include <fmt/format.h>

#include <filesystem>

#include "host/feed/nxImportWriter.h"

namespace {

// What of a file was taken for what; nothing where it is as the file before.
void Describe(std::ostream& out, const nxFeedReader& reader, std::string& before)
{
    std::string text = reader.GetDescription();
    if (text.empty()) text = std::string(reader.GetForm().format->name) + ", one of our own formats";
    if (text != before) out << reader.GetPath() << ": " << text << "\n";
    before = std::move(text);
}

}  // namespace

nxImport::Result nxImport::Run(std::ostream& out)
{
    if (!_Look(out)) return Result::Failed;
    if (_options.isDryRun) return Result::Done;
    nxImportWriter writer(_options.folder, _options.sortWindow);
    if (!writer.Begin()) return _Fail(writer.GetError());
    for (std::size_t i = 0; i < _options.files.size(); ++i) {
        if (!_readers[i]) {
            _readers[i] = _Open(i);
            if (!_readers[i]) return Result::Failed;
        }
        const Result result = _ReadFile(*_readers[i], writer, out);
        if (result != Result::Done) return result;
        _bytes += _readers[i]->GetBytesTotal();
        _readers[i].reset();
    }
    if (_rows == 0) return _Fail("the files hold no rows");
    return writer.Finish(out) ? Result::Done : _Fail(writer.GetError());
}

std::unique_ptr<nxFeedReader> nxImport::_Open(std::size_t index)
{
    auto reader = std::make_unique<nxFeedReader>(_options.files[index], static_cast<unsigned int>(index),
                                                 _products, _options.feed);
    if (reader->Open()) return reader;
    static_cast<void>(_Fail(reader->GetError().GetText()));
    return nullptr;
}

// All of them before the first is read: what is wrong with the last should not be told after an hour. They
// are opened again in their turn, but for pipes.
bool nxImport::_Look(std::ostream& out)
{
    std::string before;
    for (std::size_t i = 0; i < _options.files.size(); ++i) {
        auto reader = _Open(i);
        if (!reader) return false;
        Describe(out, *reader, before);
        _total += reader->GetBytesTotal();
        std::error_code ignored;
        if (std::filesystem::is_regular_file(_options.files[i], ignored)) reader.reset();
        _readers.push_back(std::move(reader));
    }
    return true;
}

nxImport::Result nxImport::_ReadFile(nxFeedReader& reader, nxImportWriter& writer, std::ostream& out)
{
    const auto isInterrupted = [this] { return _options.interrupted != nullptr && *_options.interrupted; };
    while (const nxFeedEvent* const event = reader.Next()) {
        if (!writer.Add(reader, *event, _products.Get(event->product))) return _Fail(writer.GetError());
        if (++_rows % 4096 != 0) continue;
        if (isInterrupted()) return Result::Interrupted;
        if (_options.progress) _options.progress(_rows, _bytes + reader.GetBytesConsumed(), _total);
    }
    if (reader.GetError().IsSet())
        return isInterrupted() ? Result::Interrupted : _Fail(reader.GetError().GetText());
    for (const nxFeedError& error : reader.GetBadRows())
        out << error.GetText() << ", skipped\n";
    if (reader.GetBadRowCount() > reader.GetBadRows().size())
        out << fmt::format("{}: {} bad rows skipped in all\n", reader.GetPath(), reader.GetBadRowCount());
    if (reader.GetSkippedCount() != 0)
        out << fmt::format("{}: {} rows hold nothing that counts\n", reader.GetPath(),
                           reader.GetSkippedCount());
    if (reader.HasOpenEnd()) out << reader.GetPath() << ": the last line has no end; the file may be cut\n";
    return Result::Done;
}

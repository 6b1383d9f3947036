#include "host/feed/nxImport.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <limits>

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
    for (Source& source : _sources) {
        if (!source.reader) source.reader = _Open(source.path);
        if (!source.reader) return Result::Failed;
        const Result result = _ReadFile(*source.reader, writer, out);
        if (result != Result::Done) return result;
        _bytes += source.reader->GetBytesTotal();
        source.reader.reset();
    }
    if (_rows == 0) return _Fail("the files hold no rows");
    return writer.Finish(out) ? Result::Done : _Fail(writer.GetError());
}

std::unique_ptr<nxFeedReader> nxImport::_Open(const std::string& path)
{
    auto reader = std::make_unique<nxFeedReader>(path, 0, _products, _options.feed);
    if (reader->Open()) return reader;
    static_cast<void>(_Fail(reader->GetError().GetText()));
    return nullptr;
}

// All of them before the first is read: what is wrong with the last should not be told after an hour, and the
// files of a product come in any order. They are opened again in their turn, but for pipes.
bool nxImport::_Look(std::ostream& out)
{
    std::string before;
    for (const std::string& path : _options.files) {
        auto reader = _Open(path);
        if (!reader) return false;
        Describe(out, *reader, before);
        _total += reader->GetBytesTotal();
        Source& source = _sources.emplace_back();
        source.path = path;
        source.first = reader->GetFirstTime().value_or(std::numeric_limits<long long>::max());
        std::error_code ignored;
        if (!std::filesystem::is_regular_file(path, ignored)) source.reader = std::move(reader);
    }
    std::ranges::stable_sort(_sources, {}, &Source::first);
    return true;
}

nxImport::Result nxImport::_ReadFile(nxFeedReader& reader, nxImportWriter& writer, std::ostream& out)
{
    writer.BeginFile();
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

#include "host/feed/nxImportWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>

#include "host/feed/nxFeedTime.h"
#include "host/feed/nxSha256.h"

namespace {

namespace fs = std::filesystem;

const char* GetKindName(const nxFeedReader& reader)
{
    if (reader.GetKind() == nxFeedKind::Bar) return "bars";
    if (reader.GetKind() == nxFeedKind::Depth) return "depth";
    const bool hasQuotes = std::ranges::any_of(reader.GetForm().columns, [](const nxFeedColumn& column) {
        return column.name == "bid" || column.name == "ask";
    });
    return hasQuotes ? "quotes" : "trades";
}

// As part of a file's name.
std::string GetSafeName(const std::string& product)
{
    std::string name = product;
    std::ranges::replace_if(
        name, [](unsigned char c) { return c < 0x21 || c == '/' || c == '\\' || c == 0x7F; }, '_');
    return name.starts_with('.') ? "_" + name : name;
}

// For a person.
std::string GetSource(const nxFeedReader& reader)
{
    std::string name = fs::path(reader.GetPath()).filename().string();
    if (!nxDataSet::CanTell(name))
        std::ranges::replace_if(
            name, [](unsigned char c) { return c >= 0x80; }, '?');
    return name;
}

}  // namespace

nxImportWriter::nxImportWriter(const std::string& folder, long long sortWindow)
    : _target(folder), _folder(fs::path(folder) / ".import.part"), _sortWindow(sortWindow)
{
}

nxImportWriter::~nxImportWriter()
{
    std::error_code ignored;
    fs::remove_all(_folder, ignored);
}

bool nxImportWriter::Begin()
{
    std::error_code failure;
    fs::remove_all(_folder, failure);
    if (!failure) fs::create_directories(_folder, failure);
    if (failure) _error = _target + ": " + failure.message();
    return !failure;
}

bool nxImportWriter::_Put(nxImportedProduct& file, nxImportedProduct::Row row)
{
    if (file.Add(std::move(row))) return true;
    _error = file.GetError();
    return false;
}

nxImportedProduct& nxImportWriter::_Get(const nxFeedReader& reader, const nxFeedProduct& product)
{
    if (_last != nullptr && &product == _lastProduct) return *_last;
    const std::string kind = GetKindName(reader);
    const std::string name = GetSafeName(product.GetName()) + "." + kind + ".csv.zst";
    std::unique_ptr<nxImportedProduct>& file = _files[name];
    if (!file) {
        nxDataSet::File facts;
        facts.name = name;
        facts.kind = kind;
        facts.product = product.GetName();
        facts.source = GetSource(reader);
        if (reader.GetKind() == nxFeedKind::Bar && product.IsBarPeriodGiven())
            facts.period = product.GetBarPeriod();
        const std::string header = kind == "trades" ? "time,product,last,lastVolume,side"
                                                    : nxFeedFormat::Get(reader.GetKind()).GetHeader();
        file = std::make_unique<nxImportedProduct>(std::move(facts), header, (_folder / name).string(),
                                                   _sortWindow);
    } else if (const std::string source = GetSource(reader);
               file->GetFile().source.find(source) == std::string::npos)
    {
        file->GetFile().source += ", " + source;
    }
    _lastProduct = &product;
    _last = file.get();
    return *_last;
}

// In the form of our own files: nanoseconds since 1970, numbers as they are written.
nxImportedProduct::Row nxImportWriter::_MakeRow(const nxFeedReader& reader, const nxFeedEvent& event,
                                                nxImportedProduct& to, const std::string& product) const
{
    using namespace nxFeedSlot;
    const nxCsvRow& numbers = reader.GetRow();
    nxImportedProduct::Row row{event.time, nxFeedTime::GetAsFileText(event.time) + "," + product, {}, {}};
    row.place = reader.GetPath() + ":" + std::to_string(event.line);
    const char* const side = numbers.side == nxCsvSide::Buy    ? "BUY"
                             : numbers.side == nxCsvSide::Sell ? "SELL"
                                                               : "";
    unsigned int price = Last;
    if (event.kind == nxFeedKind::Depth) {
        row.text += fmt::format(",{}", side);
        price = Price;
    } else if (event.kind == nxFeedKind::Bar) {
        price = Close;
    }
    const bool isOfTrades = to.GetFile().kind == "trades";
    const nxFeedFormat& format = nxFeedFormat::Get(event.kind);
    for (const nxFeedColumn& column : format.columns) {
        if (column.type != nxFeedColumnType::Number || (isOfTrades && column.slot < Last)) continue;
        const nxDecimal& number = numbers.numbers[column.slot];
        row.text += ',';
        row.text += number.GetAsString();
        if (event.kind == nxFeedKind::Bar && column.isSize && !number.IsValid()) row.text += '0';
        if (column.isSize && number.IsValid()) to.NoteSize(number);
    }
    if (event.kind == nxFeedKind::Quote) row.text += fmt::format(",{}", side);
    row.text += '\n';
    if (event.kind == nxFeedKind::Quote && !numbers.numbers[Last].IsValid()) price = Bid;
    if (numbers.numbers[price].IsValid() && event.kind != nxFeedKind::Depth)
        row.price = numbers.numbers[price];
    return row;
}

bool nxImportWriter::Add(const nxFeedReader& reader, const nxFeedEvent& event, const nxFeedProduct& product)
{
    if (&product != _lastProduct && !nxDataSet::CanTell(product.GetName())) {
        _error = reader.GetPath() + ":" + std::to_string(event.line) +
                 ": the name of the product is no UTF-8; convert the file, or name the product by --product";
        return false;
    }
    nxImportedProduct& file = _Get(reader, product);
    std::string name = product.GetName();
    if (name.find_first_of(",\"\n") != std::string::npos) {
        for (std::size_t at = 0; (at = name.find('"', at)) != std::string::npos; at += 2)
            name.insert(at, 1, '"');
        name = "\"" + name + "\"";
    }
    // Levels that a new snapshot does not hold go first.
    for (std::size_t i = 0; i + 1 < event.levels.size() && event.kind == nxFeedKind::Depth; ++i) {
        const nxFeedLevel& level = event.levels[i];
        const std::string text =
            fmt::format("{},{},{},{},0\n", nxFeedTime::GetAsFileText(event.time), name,
                        level.side == nxSide::Buy ? "BUY" : "SELL", level.price.GetAsString());
        if (!_Put(file, {event.time, text, {}, reader.GetPath() + ":" + std::to_string(event.line)}))
            return false;
    }
    return _Put(file, _MakeRow(reader, event, file, name));
}

bool nxImportWriter::Finish(std::ostream& out)
{
    for (const auto& [name, file] : _files) {
        if (!file->Finish()) {
            _error = file->GetError();
            return false;
        }
        const auto sum = nxSha256::GetOfFile(file->GetPath());
        if (!sum) {
            _error = file->GetPath() + ": cannot be read again";
            return false;
        }
        file->GetFile().sha256 = *sum;
    }
    if (!_Publish()) return false;
    for (const auto& [name, file] : _files) {
        const nxDataSet::File& facts = file->GetFile();
        out << fmt::format("{}: {} rows of {}, {} to {}\n", (fs::path(_target) / name).string(), facts.rows,
                           facts.product, nxFeedTime::GetAsString(facts.first),
                           nxFeedTime::GetAsString(facts.last));
        for (const std::string& remark : file->GetRemarks())
            out << "  " << remark << "\n";
    }
    return true;
}

// data.toml comes last: until then a reader finds the old set, or files that do not fit it.
bool nxImportWriter::_Publish()
{
    const fs::path folder(_target);
    nxDataSet set;
    std::error_code failure;
    if (fs::exists(folder / nxDataSet::FileName, failure))
        if (const auto reason = set.Read((folder / nxDataSet::FileName).string())) {
            _error = *reason;
            return false;
        }
    for (const auto& [name, file] : _files)
        set.Put(file->GetFile());
    const fs::path text = _folder / nxDataSet::FileName;
    std::ofstream stream(text, std::ios::binary);
    stream << set.GetText();
    stream.close();
    if (!stream) failure = std::make_error_code(std::errc::io_error);
    for (const auto& [name, file] : _files)
        if (!failure) fs::rename(file->GetPath(), folder / name, failure);
    if (!failure) fs::rename(text, folder / nxDataSet::FileName, failure);
    if (failure) _error = _target + ": " + failure.message();
    return !failure;
}

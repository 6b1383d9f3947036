#include "host/feed/nxDataSet.h"

#include <fmt/format.h>
#include <glob.h>

#include <algorithm>
#include <filesystem>

#include "base/time/nxTime.h"
#include "host/feed/nxFeedTime.h"
#include "host/feed/nxSha256.h"
#include "host/feed/nxTomlFile.h"

namespace {

constexpr const char* Content = "file of a data set";

// Within quotes of TOML.
std::string Quote(const std::string& text)
{
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        if (static_cast<unsigned char>(c) < ' ' || c == 0x7f)
            quoted += fmt::format("\\u{:04X}", static_cast<unsigned int>(c));
        else
            quoted += c;
    }
    return quoted + "\"";
}

class SetReader : public nxTomlFile
{
public:
    using nxTomlFile::nxTomlFile;

    void ReadAll(const toml::node& root, nxDataSet& set) const
    {
        for (const auto& [key, value] : GetEntries(root, "is no table")) {
            if (key == "format") {
                if (!value->is_integer() || *value->as_integer() != 1) Refuse(*value, "format is not 1");
            } else if (key == "file" && value->is_array()) {
                for (const toml::node& file : *value->as_array())
                    set.files.push_back(ReadFile(file));
            } else {
                RefuseKey(*value, key, "format and [[file]]");
            }
        }
    }

private:
    unsigned long long GetCount(const toml::node& value, const std::string& key) const
    {
        if (!value.is_integer() || *value.as_integer() < 0) Refuse(value, key + " is no whole number");
        return static_cast<unsigned long long>(value.as_integer()->get());
    }
    long long GetTime(const toml::node& value, const std::string& key) const
    {
        long long time = 0;
        if (const char* const reason = nxFeedTime::SetFromText(GetText(value, key), time))
            Refuse(value, key + ": " + reason);
        return time;
    }

    nxDataSet::File ReadFile(const toml::node& table) const
    {
        nxDataSet::File file;
        for (const auto& [key, value] : GetEntries(table, "file is no table; write [[file]]")) {
            const std::pair<const char*, std::string*> texts[] = {{"name", &file.name},
                                                                  {"kind", &file.kind},
                                                                  {"product", &file.product},
                                                                  {"sha256", &file.sha256},
                                                                  {"source", &file.source}};
            const auto text = std::ranges::find(texts, key, &std::pair<const char*, std::string*>::first);
            if (text != std::end(texts))
                *text->second = GetText(*value, key);
            else if (key == "rows")
                file.rows = GetCount(*value, key);
            else if (key == "first")
                file.first = GetTime(*value, key);
            else if (key == "last")
                file.last = GetTime(*value, key);
            else if (key == "period")
                file.period = static_cast<long long>(GetCount(*value, key)) * nxTime::NanosecondsPerSecond;
            else if (key == "lotSize") {
                if (!file.lotSize.SetFromString(GetText(*value, key)).IsSuccess() ||
                    file.lotSize <= nxDecimalZero)
                    Refuse(*value, "lotSize is no number above 0");
            } else
                RefuseKey(*value, key,
                          "name, kind, product, rows, first, last, period, lotSize, sha256, source");
        }
        if (file.name.empty() || file.sha256.empty()) Refuse(table, "a file without name or sha256");
        return file;
    }
};

bool IsDataName(const std::filesystem::path& path)
{
    constexpr const char* endings[] = {".csv", ".txt", ".gz", ".zst", ".xz", ".bz2", ".zip"};
    return !path.filename().string().starts_with('.') &&
           std::ranges::find(endings, path.extension().string()) != std::end(endings);
}

}  // namespace

std::optional<std::string> nxDataSet::Read(const std::string& path)
{
    const SetReader reader(path);
    nxFeedError error;
    if (!reader.Read(
            Content, [&](const toml::node& root) { reader.ReadAll(root, *this); }, error))
        return error.GetText();
    return std::nullopt;
}

std::string nxDataSet::GetText() const
{
    std::string text =
        "# Written by algoserver import. Sizes are as recorded, times of bars are their ends.\nformat = 1\n";
    for (const File& file : files) {
        text += fmt::format("\n[[file]]\nname = {}\nkind = {}\nproduct = {}\nrows = {}\n", Quote(file.name),
                            Quote(file.kind), Quote(file.product), file.rows);
        text += fmt::format("first = \"{}\"\nlast = \"{}\"\n", nxFeedTime::GetAsString(file.first),
                            nxFeedTime::GetAsString(file.last));
        if (file.period != 0)
            text += fmt::format("period = {}  # seconds\n", file.period / nxTime::NanosecondsPerSecond);
        if (file.lotSize != nxDecimalOne)
            text += fmt::format("lotSize = \"{}\"\n", file.lotSize.GetAsString());
        text += fmt::format("sha256 = {}\nsource = {}\n", Quote(file.sha256), Quote(file.source));
    }
    return text;
}

// Neither longer than needed, nor half of a pair, nor beyond the last character.
bool nxDataSet::CanTell(std::string_view text)
{
    constexpr unsigned long leasts[] = {0, 0x80, 0x800, 0x10000};
    for (std::size_t place = 0; place < text.size();) {
        const auto first = static_cast<unsigned char>(text[place++]);
        const std::size_t more = first < 0x80 ? 0 : first < 0xe0 ? 1 : first < 0xf0 ? 2 : 3;
        if ((first >= 0x80 && first < 0xc0) || first >= 0xf8 || text.size() - place < more) return false;
        unsigned long character = more == 0 ? first : first & (0x3fu >> more);
        for (std::size_t i = 0; i < more; ++i) {
            const auto next = static_cast<unsigned char>(text[place++]);
            if ((next & 0xc0) != 0x80) return false;
            character = character << 6 | (next & 0x3f);
        }
        if (character < leasts[more] || character > 0x10ffff || (character >> 11) == 0x1b) return false;
    }
    return true;
}

void nxDataSet::Put(File file)
{
    const auto known = std::ranges::find(files, file.name, &File::name);
    if (known == files.end())
        files.push_back(std::move(file));
    else
        *known = std::move(file);
}

std::optional<std::string> nxDataFiles::Add(const std::string& name)
{
    std::error_code ignored;
    if (std::filesystem::is_directory(name, ignored)) return _AddFolder(name);
    if (name.ends_with(".toml")) return _AddSet(name);
    if (name.find_first_of("*?[") != name.npos && !std::filesystem::exists(name, ignored))
        return _AddPattern(name);
    paths.push_back(name);
    return std::nullopt;
}

std::optional<std::string> nxDataFiles::_AddFolder(const std::string& name)
{
    std::error_code error;
    const std::filesystem::path folder(name);
    if (std::filesystem::exists(folder / nxDataSet::FileName, error))
        return _AddSet((folder / nxDataSet::FileName).string());
    std::vector<std::string> found;
    for (auto entry = std::filesystem::directory_iterator(folder, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
        if (IsDataName(entry->path()) && !entry->is_directory()) found.push_back(entry->path().string());
    if (error) return name + ": " + error.message();
    if (found.empty())
        return name +
               ": no data file in this folder; such are named .csv or .txt, and .gz, .zst, .xz, .bz2 or .zip";
    std::ranges::sort(found);
    paths.insert(paths.end(), found.begin(), found.end());
    return std::nullopt;
}

std::optional<std::string> nxDataFiles::_AddPattern(const std::string& name)
{
    glob_t found{};
    const int result = glob(name.c_str(), 0, nullptr, &found);
    for (std::size_t i = 0; result == 0 && i < found.gl_pathc; ++i)
        paths.emplace_back(found.gl_pathv[i]);
    globfree(&found);
    if (result != 0) return name + ": no file matches";
    return std::nullopt;
}

std::optional<std::string> nxDataFiles::_AddSet(const std::string& name)
{
    nxDataSet set;
    if (auto error = set.Read(name)) return error;
    const std::filesystem::path folder = std::filesystem::path(name).parent_path();
    for (const nxDataSet::File& file : set.files) {
        const std::string path = (folder / file.name).string();
        const auto sum = nxSha256::GetOfFile(path);
        if (!sum) return name + ": " + path + " is missing or cannot be read; import it again";
        if (*sum != file.sha256)
            return name + ": " + path +
                   " is not the file that was imported (its sha256 differs); import it again";
        paths.push_back(path);
        if (file.lotSize != nxDecimalOne) lotSizes[file.product] = file.lotSize;
        if (file.period != 0) barPeriods[file.product] = file.period;
    }
    if (set.files.empty()) return name + ": the set holds no files";
    return std::nullopt;
}

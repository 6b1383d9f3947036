#include "host/author/nxScriptProject.h"

#include <fcntl.h>
#include <stdlib.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sstream>

#include "host/author/nxAuthorTexts.h"
#include "host/author/nxScriptMembers.h"
#include "host/report/nxOutputFile.h"
#include "host/synthetic/nxMarketGenerator.h"

namespace fs = std::filesystem;

// The data of each product come from a seed of their own, which is its place in the list.
struct nxScriptProject::Template
{
    const char* name;
    const std::string& (*getScript)();
    const std::string& (*getTests)();
    const char* about;  // what the script does, after its name
    const char* vary;   // what the sweep goes through
    std::vector<std::string> products;
    bool isDescribed;  // by a file of products
};

const nxScriptProject::Template nxScriptProject::Templates[] = {
    {"bars",
     &nxAuthorBarsText,
     &nxAuthorBarsTestText,
     "is long while bars of a minute close above their mean.",
     "length=5:20:5",
     {"SIM"},
     false},
    {"quotes",
     &nxAuthorQuotesText,
     &nxAuthorQuotesTestText,
     "goes with the heavier side of the best quote.",
     "weight=4:8:2",
     {"SIM"},
     false},
    {"maker",
     &nxAuthorMakerText,
     &nxAuthorMakerTestText,
     "quotes both sides of a market.",
     "limit=2:6:2",
     {"SIM"},
     false},
    {"spread",
     &nxAuthorSpreadText,
     &nxAuthorSpreadTestText,
     "trades the difference of two products as one.",
     "edge=2:4:1",
     {"FAR", "NEAR"},
     true},
};

namespace {

// Goes with all that is in it.
class Scratch
{
public:
    explicit Scratch(const fs::path& beside) : _path((beside / ".algoserver.XXXXXX").string())
    {
        if (mkdtemp(_path.data()) == nullptr) _path.clear();
    }
    ~Scratch()
    {
        if (_path.empty()) return;
        try {
            fs::remove_all(_path);
        } catch (const std::exception&) {
            // There is nobody to tell that more failed than what has been told.
        }
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    const std::string& GetPath() const { return _path; }  // empty: errno tells why

private:
    std::string _path;
};

std::optional<std::string> WriteText(const fs::path& path, std::string_view text)
{
    nxOutputFile file("the folder");
    if (auto error = file.Open(path.string())) return error;
    file.Write(text);
    return file.Close();
}

void Replace(std::string& text, const std::string& mark, const std::string& by)
{
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + by.size()))
        text.replace(at, mark.size(), by);
}

// So that commands need no quotes, and a job no other name.
bool IsName(const std::string& name)
{
    const auto isPlain = [](unsigned char c) { return std::isalnum(c) != 0 || c == '_' || c == '-'; };
    return !name.empty() && std::isalpha(static_cast<unsigned char>(name[0])) != 0 &&
           std::ranges::all_of(name, isPlain);
}

std::string Lower(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

}  // namespace

std::vector<std::string> nxScriptProject::GetTemplates()
{
    std::vector<std::string> names;
    for (const Template& known : Templates)
        names.emplace_back(known.name);
    return names;
}

nxScriptProject::nxScriptProject(std::string folder, const std::string& templateName)
    : _folder(std::move(folder)),
      _template(*std::ranges::find(Templates, templateName, &Template::name)),
      _name(fs::path(_folder).filename().string())
{
}

std::optional<std::string> nxScriptProject::Write(const std::function<bool()>& goesOn)
{
    if (!IsName(_name)) return _folder + ": a name is letters, digits, _ and -, and begins with a letter";
    std::error_code failure;
    if (fs::exists(fs::symlink_status(_folder, failure))) return _folder + ": there is one already";
    const fs::path parent = fs::path(_folder).parent_path();
    const Scratch scratch(parent.empty() ? "." : parent);
    if (scratch.GetPath().empty()) return _folder + ": " + std::strerror(errno);
    const std::string made = scratch.GetPath() + "/" + _name;
    if (const auto error = _Fill(made, goesOn)) return error;
    // Of two commands at once one makes the folder.
    if (renameat2(AT_FDCWD, made.c_str(), AT_FDCWD, _folder.c_str(), RENAME_NOREPLACE) != 0)
        return _folder + ": " + std::strerror(errno);
    return std::nullopt;
}

std::optional<std::string> nxScriptProject::_Fill(const std::string& folder,
                                                  const std::function<bool()>& goesOn)
{
    nxScriptMembers members;
    std::string types, error;
    if (!members.Load(error) || !members.GetDefinitions(types, error)) return error;
    std::error_code failure;
    for (const char* const part : {"/data", "/types"})
        if (!fs::create_directories(folder + part, failure)) return folder + part + ": " + failure.message();
    std::string tests = _template.getTests();
    Replace(tests, "@NAME@", _name);
    std::vector<std::pair<std::string, std::string>> files = {
        {_name + ".lua", _template.getScript()},
        {_name + "_test.lua", tests},
        {"README.md", _MakePage()},
        {"types/algoserver.lua", types},
        {".luarc.json", nxScriptMembers::GetSettings("types")},
    };
    if (_template.isDescribed) files.emplace_back("products.toml", nxAuthorProductsText());
    for (const auto& [name, text] : files)
        if (auto unwritten = WriteText(fs::path(folder) / name, text)) return unwritten;
    return _WriteData(folder + "/data/", goesOn);
}

std::optional<std::string> nxScriptProject::_WriteData(const std::string& folder,
                                                       const std::function<bool()>& goesOn) const
{
    nxMarketGeneratorOptions options;
    options.rateScale = 6;  // a day of a megabyte
    for (const std::string& product : _template.products) {
        options.product = product;
        nxMarketGenerator generator(options);
        nxOutputFile file("the data");
        if (auto error = file.Open(folder + Lower(product) + ".csv")) return error;
        const bool isMade = generator.Generate([&](std::string_view text) {
            file.Write(text);
            return !file.HasFailed() && goesOn();
        });
        if (auto error = file.Close()) return error;
        if (!isMade) return generator.GetFailure().empty() ? "interrupted" : generator.GetFailure();
        ++options.seed;
    }
    return std::nullopt;
}

std::string nxScriptProject::_MakePage()
{
    std::string options = "--data", page = nxAuthorReadmeText();
    for (const std::string& product : _template.products)
        options += " data/" + Lower(product) + ".csv";
    if (_template.isDescribed) options += " --products products.toml";
    options += " --latency 5ms --feed-latency 5ms";
    Replace(page, "@FILES@", _template.isDescribed ? "| `products.toml` | what the products are |\n" : "");
    Replace(page, "@NAME@", _name);
    Replace(page, "@ABOUT@", _template.about);
    Replace(page, "@OPTIONS@", options);
    Replace(page, "@VARY@", _template.vary);
    constexpr std::string_view indent = "    ";
    std::istringstream lines(page);
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with(indent)) _commands.push_back(line.substr(indent.size()));
    return page;
}

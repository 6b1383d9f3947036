#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "host/feed/nxImportWriter.h"

struct nxImportOptions
{
    std::vector<std::string> files;
    std::string folder;  // to write to; made where it is missing
    nxFeedOptions feed;
    long long sortWindow = 10'000'000'000;  // nanoseconds by which a row may come too late and is sorted in
    bool isDryRun = false;                  // only tells what would be taken for what
    // Told now and then how far it is: rows, bytes read and in all (0: unknown).
    std::function<void(unsigned long long rows, unsigned long long bytes, unsigned long long total)> progress;
    const std::atomic<bool>* interrupted = nullptr;
};

// Makes files of our own formats of any that can be read: one for each product and kind, packed, with
// data.toml beside them, and reports what is odd about the data. The files of a folder are replaced all at
// once at the end, so that an import that fails or is interrupted leaves the folder as it was. One object,
// one import, one thread.
class nxImport
{
public:
    enum class Result { Done, Failed, Interrupted };

    explicit nxImport(const nxImportOptions& options) : _options(options) {}

    // The report goes to out; GetError() tells why it failed.
    [[nodiscard]] Result Run(std::ostream& out);
    const std::string& GetError() const { return _error; }

private:
    Result _Fail(std::string error)
    {
        _error = std::move(error);
        return Result::Failed;
    }
    std::unique_ptr<nxFeedReader> _Open(const std::string& path);
    bool _Look(std::ostream& out);
    Result _ReadFile(nxFeedReader& reader, nxImportWriter& writer, std::ostream& out);

    const nxImportOptions& _options;
    nxFeedProductTable _products{_options.feed.barPeriods};
    struct Source
    {
        std::string path;
        long long first = 0;                   // time
        std::unique_ptr<nxFeedReader> reader;  // of a pipe, else null until the file's turn
    };
    std::vector<Source> _sources;  // by their first times
    unsigned long long _rows = 0, _bytes = 0, _total = 0;
    std::string _error;
};

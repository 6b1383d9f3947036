#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <ostream>
#include <string>

#include "host/feed/nxFeedReader.h"
#include "host/feed/nxImportedProduct.h"

// Writes the rows of one import to files of our own formats, in a folder within the one that they are for,
// and puts them in their places at the end. Goes without a trace otherwise. Used by one thread.
class nxImportWriter
{
public:
    // sortWindow: nanoseconds, see nxImportedProduct.
    nxImportWriter(const std::string& folder, long long sortWindow);
    ~nxImportWriter();
    nxImportWriter(const nxImportWriter&) = delete;
    nxImportWriter& operator=(const nxImportWriter&) = delete;

    [[nodiscard]] bool Begin();
    // Rows of another reader follow.
    void BeginFile() { _last = nullptr; }
    // What the reader gave last, a row of the product.
    [[nodiscard]] bool Add(const nxFeedReader& reader, const nxFeedEvent& event,
                           const nxFeedProduct& product);
    // Tells of each file, and what is odd about it.
    [[nodiscard]] bool Finish(std::ostream& out);
    // Why one of them was false.
    const std::string& GetError() const { return _error; }

private:
    nxImportedProduct& _Get(const nxFeedReader& reader, const nxFeedProduct& product);
    nxImportedProduct::Row _MakeRow(const nxFeedReader& reader, const nxFeedEvent& event,
                                    nxImportedProduct& to, const std::string& product) const;
    bool _Put(nxImportedProduct& file, nxImportedProduct::Row row);
    bool _Publish();

    const std::string _target;
    const std::filesystem::path _folder;
    const long long _sortWindow;
    std::map<std::string, std::unique_ptr<nxImportedProduct>> _files;  // by name
    const nxFeedProduct* _lastProduct = nullptr;
    nxImportedProduct* _last = nullptr;
    std::string _error;
};

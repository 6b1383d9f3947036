#include "base/values/nxSharedText.h"

#include <mutex>
#include <unordered_map>

namespace {

struct Table
{
    std::mutex mutex;
    std::unordered_map<std::string, std::size_t> texts;
};

// Never destroyed, since holders may outlive main.
Table& GetTable()
{
    static auto* const table = new Table;
    return *table;
}

const std::string Empty;

}  // namespace

nxSharedText::nxSharedText(const std::string& text)
{
    if (text.empty()) return;
    Table& table = GetTable();
    const std::lock_guard guard(table.mutex);
    _entry = &*table.texts.try_emplace(text, 0).first;
    ++_entry->second;
}

nxSharedText::nxSharedText(const nxSharedText& other) : _entry(other._entry)
{
    if (_entry == nullptr) return;
    const std::lock_guard guard(GetTable().mutex);
    ++_entry->second;
}

nxSharedText::~nxSharedText()
{
    if (_entry == nullptr) return;
    Table& table = GetTable();
    const std::lock_guard guard(table.mutex);
    if (--_entry->second == 0) table.texts.erase(table.texts.find(_entry->first));
}

const std::string& nxSharedText::Get() const
{
    return _entry == nullptr ? Empty : _entry->first;
}

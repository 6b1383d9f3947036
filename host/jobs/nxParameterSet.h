#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "scriptFramework/supervision/nxVorantParameter.h"

// The parameters of one job by name. A value: the parameters themselves never change, a new value is a new
// one, so that copies share them. One thread at a time.
class nxParameterSet
{
public:
    // The names of the types, for messages.
    static constexpr const char* TypeNames = "decimal, uint, price, double, int, bool, text";
    static bool IsTypeName(std::string_view type);

    // As the job starts with it. The type is that named; without a name, the one that an earlier Define named
    // for it; else as the text looks: true and false are bool, whole numbers int, or decimal where they are
    // too large, numbers with a point decimal, all else text. Null, or why the text was refused.
    [[nodiscard]] std::optional<std::string> Define(const std::string& name, const std::string& type,
                                                    const std::string& text);
    // As it changes later: the parameter keeps the type it has, however it came by it. One that is new gets
    // its type from the text.
    [[nodiscard]] std::optional<std::string> Change(const std::string& name, const std::string& text);

    // As a script reads it, which is noted. Null: there is none of that name.
    const nxVorantParameter* Find(const std::string& name) const;

    std::set<std::string> GetNames() const;
    // All by name, each as a text. Not noted as read.
    std::vector<std::pair<std::string, std::string>> GetTexts() const;
    bool WasRead(const std::string& name) const;
    bool WasChanged(const std::string& name) const;
    // Names that were read and that there were none of, the first few.
    const std::set<std::string>& GetMissed() const { return _missed; }

private:
    struct Entry
    {
        std::shared_ptr<const nxVorantParameter> parameter;
        std::string type;
        bool isTypeGiven = false;
        bool isChanged = false;
        mutable bool isRead = false;
    };

    std::optional<std::string> _Set(Entry& entry, const std::string& name, const std::string& type,
                                    const std::string& text);

    std::map<std::string, Entry> _entries;
    mutable std::set<std::string> _missed;
};

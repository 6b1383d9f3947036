#include "host/jobs/nxParameterSet.h"

#include <algorithm>

#include "host/jobs/nxTextParameter.h"
#include "scriptFramework/supervision/nxVorantParameterTemplate.h"

namespace {

template <class Parameter>
std::unique_ptr<nxVorantParameter> Make(const std::string& name)
{
    return std::make_unique<Parameter>(name);
}

constexpr struct
{
    std::string_view name;
    std::unique_ptr<nxVorantParameter> (*make)(const std::string& name);
} Types[] = {
    {"decimal", Make<nxVorantDecimalParameter>},
    {"uint", Make<nxVorantVolumeParameter>},
    {"price", Make<nxVorantPriceParameter>},
    {"double", Make<nxVorantDoubleParameter>},
    {"int", Make<nxVorantIntegerParameter>},
    {"bool", Make<nxVorantBoolParameter>},
    {"text", Make<nxTextParameter>},
};

// Null: `reason` tells why the text is none of the type.
std::unique_ptr<nxVorantParameter> Read(const std::string& name, std::string_view type,
                                        const std::string& text, std::string& reason)
{
    std::unique_ptr<nxVorantParameter> parameter =
        std::ranges::find(Types, type, &std::remove_cvref_t<decltype(Types[0])>::name)->make(name);
    const nxErrorEnum error = parameter->PersistValueFromString(text);
    if (error.IsSuccess()) {
        // A number that serves as a mark would be nil to the script.
        std::string kept;
        parameter->PersistValueToString(kept);
        if (!kept.empty() || text.empty()) return parameter;
        reason = nxErrorEnum(nxError_NumberOutOfRange).GetLongDescription();
    } else {
        reason = type == "bool" ? "neither true nor false" : error.GetLongDescription();
    }
    return nullptr;
}

std::string GetTypeOf(const std::string& text)
{
    if (text == "true" || text == "false") return "bool";
    std::string reason;
    for (const char* type : {"int", "decimal"})
        if (Read({}, type, text, reason) != nullptr) return type;
    return "text";
}

}  // namespace

bool nxParameterSet::IsTypeName(std::string_view type)
{
    return std::ranges::any_of(Types, [type](const auto& known) { return known.name == type; });
}

std::optional<std::string> nxParameterSet::_Set(Entry& entry, const std::string& name,
                                                const std::string& type, const std::string& text)
{
    std::string reason;
    std::unique_ptr<nxVorantParameter> parameter = Read(name, type, text, reason);
    if (parameter == nullptr) return "parameter " + name + ": \"" + text + "\" is no " + type + ": " + reason;
    entry.parameter = std::move(parameter);
    entry.type = type;
    return std::nullopt;
}

std::optional<std::string> nxParameterSet::Define(const std::string& name, const std::string& type,
                                                  const std::string& text)
{
    Entry& entry = _entries[name];
    if (type.empty()) return _Set(entry, name, entry.isTypeGiven ? entry.type : GetTypeOf(text), text);
    entry.isTypeGiven = true;
    return _Set(entry, name, type, text);
}

std::optional<std::string> nxParameterSet::Change(const std::string& name, const std::string& text)
{
    Entry& entry = _entries[name];
    entry.isChanged = true;
    return _Set(entry, name, entry.parameter == nullptr ? GetTypeOf(text) : entry.type, text);
}

const nxVorantParameter* nxParameterSet::Find(const std::string& name) const
{
    constexpr std::size_t mostMissed = 10;
    const auto found = _entries.find(name);
    if (found == _entries.end()) {
        if (_missed.size() < mostMissed) _missed.insert(name);
        return nullptr;
    }
    found->second.isRead = true;
    return found->second.parameter.get();
}

std::vector<std::pair<std::string, std::string>> nxParameterSet::GetTexts() const
{
    std::vector<std::pair<std::string, std::string>> texts;
    for (const auto& [name, entry] : _entries)
        entry.parameter->PersistValueToString(texts.emplace_back(name, std::string()).second);
    return texts;
}

std::set<std::string> nxParameterSet::GetNames() const
{
    std::set<std::string> names;
    for (const auto& [name, entry] : _entries)
        names.insert(name);
    return names;
}

bool nxParameterSet::WasRead(const std::string& name) const
{
    const auto found = _entries.find(name);
    return found != _entries.end() && found->second.isRead;
}

bool nxParameterSet::WasChanged(const std::string& name) const
{
    const auto found = _entries.find(name);
    return found != _entries.end() && found->second.isChanged;
}

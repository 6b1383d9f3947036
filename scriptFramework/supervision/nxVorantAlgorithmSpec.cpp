#include "scriptFramework/supervision/nxVorantAlgorithmSpec.h"

#include <utility>

namespace {

constexpr char Escape = '\\';
constexpr char PairEnd = ';';
constexpr char NameEnd = '=';

void AppendEscaped(std::string& text, const std::string& part)
{
    for (const char character : part) {
        if (character == Escape || character == PairEnd || character == NameEnd) text += Escape;
        text += character;
    }
}

}  // namespace

nxErrorEnum nxVorantAlgorithmSpec::ExtractParametersFromUserString(
    const std::string& text, std::map<std::string, std::string>& parameters)
{
    nxErrorEnum error;
    std::string name;
    std::string part;  // the name until its '=', then the value
    bool named = false;
    const auto endPair = [&] {
        if (named) {
            parameters.insert_or_assign(std::move(name), std::move(part));
        } else if (!part.empty()) {
            error = nxError_GeneralFailure;
        }
        name.clear();
        part.clear();
        named = false;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == Escape && i + 1 < text.size()) {
            part += text[++i];
        } else if (text[i] == PairEnd) {
            endPair();
        } else if (text[i] == NameEnd && !named) {
            named = true;
            name.swap(part);
        } else {
            part += text[i];
        }
    }
    endPair();
    return error;
}

std::string nxVorantAlgorithmSpec::JoinParametersToUserString(
    const std::map<std::string, std::string>& parameters)
{
    std::string text;
    for (const auto& [name, value] : parameters) {
        if (!text.empty()) text += PairEnd;
        AppendEscaped(text, name);
        text += NameEnd;
        AppendEscaped(text, value);
    }
    return text;
}

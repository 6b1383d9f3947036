#include "host/report/nxRecordLines.h"

#include <limits>

#include "host/feed/nxFeedTime.h"
#include "host/report/nxJsonWriter.h"

namespace {

using Json = nxRecordLines::Json;

// Keeps the text of a number whose digits a double would lose.
class ExactParser : public nlohmann::detail::json_sax_dom_parser<Json>
{
public:
    explicit ExactParser(Json& json) : json_sax_dom_parser(json, false) {}

    bool number_float(double number, const std::string& text)
    {
        const bool isPlain = text.find_first_of("eE") == text.npos && !text.ends_with(".0");
        if (!isPlain || nxJsonWriter::GetNumber(number) == text)
            return json_sax_dom_parser::number_float(number, text);
        std::string kept = text;
        return string(kept);
    }
};

}  // namespace

bool nxRecordLines::Open(const std::string& path)
{
    _path = path;
    if (_stream.Open(path, "record of a run")) return true;
    _failure = path + ": " + _stream.GetFailure();
    return false;
}

nxRecordLines::Step nxRecordLines::_Fail(const std::string& what)
{
    _failure = GetPlace() + what;
    return Step::Failed;
}

// False: the stream has failed.
bool nxRecordLines::_Fill()
{
    constexpr std::size_t size = 256 * 1024;
    _buffer.erase(0, _begin);
    _begin = 0;
    const std::size_t filled = _buffer.size();
    _buffer.resize(filled + size);
    const long long count = _stream.Read(_buffer.data() + filled, size);
    _buffer.resize(filled + static_cast<std::size_t>(std::max(count, 0ll)));
    _isOver = count <= 0;
    _isCut = _stream.IsCut();
    return count >= 0 || _isCut;
}

nxRecordLines::Step nxRecordLines::Next()
{
    constexpr std::size_t longest = 64 << 20;
    ++_line;
    for (std::size_t from = _begin;;) {
        const std::size_t end = _buffer.find('\n', from);
        if (end != _buffer.npos) {
            const std::string_view line = std::string_view(_buffer).substr(_begin, end - _begin);
            _begin = end + 1;
            return _Parse(line, true);
        }
        if (_isOver) break;
        if (_buffer.size() - _begin > longest) return _Fail("is longer than 64 MiB");
        from = _buffer.size() - _begin;
        if (!_Fill()) return _Fail(_stream.GetFailure());
    }
    if (_begin == _buffer.size()) return Step::End;
    const std::string rest = std::exchange(_buffer, {}).substr(std::exchange(_begin, 0));
    return _Parse(rest, false);
}

nxRecordLines::Step nxRecordLines::_Parse(std::string_view text, bool hasEnd)
{
    Json json;
    ExactParser parser(json);
    const bool isRead = Json::sax_parse(text, &parser) && json.is_object();
    if (!isRead && !hasEnd && _sequence != 0) {
        _isCut = true;
        return Step::End;
    }
    if (!isRead || !GetPart(json, "type").is_string() || !GetPart(json, "sequence").is_number_unsigned())
        return _Fail("is no line of the record of a run");
    const unsigned long long sequence = GetCount(json, "sequence");
    if (sequence != ++_sequence)
        return _Fail("sequence is " + std::to_string(sequence) + " and not " + std::to_string(_sequence) +
                     "; a record is read as it was written, with all its lines");
    _json = std::move(json);
    return Step::Line;
}

const std::vector<nxRunRecord::Field>& nxRecordLines::GetFields()
{
    _fields.clear();
    for (const auto& item : _json.items()) {
        const Json& value = item.value();
        const char* const name = item.key().c_str();
        if (value.is_string())
            _fields.push_back({name, std::string_view(value.get_ref<const std::string&>())});
        else if (value.is_number())
            _fields.push_back({name, value.get<double>()});
        else if (value.is_boolean())
            _fields.push_back({name, value.get<bool>()});
    }
    return _fields;
}

const Json& nxRecordLines::GetPart(const Json& json, const char* key)
{
    static const Json none;
    if (!json.is_object()) return none;
    const auto found = json.find(key);
    return found == json.end() ? none : *found;
}

const std::string& nxRecordLines::GetText(const Json& json, const char* key)
{
    static const std::string none;
    const Json& part = GetPart(json, key);
    return part.is_string() ? part.get_ref<const std::string&>() : none;
}

unsigned long long nxRecordLines::GetCount(const Json& json, const char* key)
{
    const Json& part = GetPart(json, key);
    if (part.is_number_unsigned()) return part.get<unsigned long long>();
    const double number = ToNumber(part);  // as version 1 wrote whole numbers
    return number >= 0.0 && number < 1e18 ? static_cast<unsigned long long>(number) : 0;
}

std::optional<long long> nxRecordLines::GetTime(const Json& json, const char* key)
{
    long long time = 0;
    const std::string& text = GetText(json, key);
    if (text.empty() || nxFeedTime::SetFromText(text, time) != nullptr) return std::nullopt;
    return time;
}

double nxRecordLines::ToNumber(const Json& json)
{
    return json.is_number() ? json.get<double>() : std::numeric_limits<double>::quiet_NaN();
}

nxExactAmount nxRecordLines::ToAmount(const Json& json)
{
    if (json.is_string()) return nxExactAmount::FromText(json.get_ref<const std::string&>());
    if (json.is_number_unsigned())
        return nxExactAmount::FromText(std::to_string(json.get<unsigned long long>()));
    if (json.is_number_integer()) return nxExactAmount::FromText(std::to_string(json.get<long long>()));
    return nxExactAmount::FromText(nxJsonWriter::GetNumber(ToNumber(json)));
}

std::vector<std::string> nxRecordLines::ToTexts(const Json& json)
{
    std::vector<std::string> texts;
    if (json.is_array())
        for (const Json& text : json)
            if (text.is_string()) texts.push_back(text.get<std::string>());
    return texts;
}

#include "host/report/nxRunRecord.h"

#include "base/values/nxTextStream.h"
#include "host/report/nxJsonWriter.h"

namespace {

// Writes a value as its type tells.
struct Value
{
    nxJsonWriter& json;

    void operator()(std::string_view text) const { json.Text(text); }
    void operator()(double number) const { json.Number(number); }
    void operator()(unsigned int count) const { json.Count(count); }
    void operator()(unsigned long long count) const { json.Count(count); }
    void operator()(long long number) const { json.Raw(std::to_string(number)); }
    void operator()(bool value) const { json.Bool(value); }
    void operator()(nxRunRecord::Json value) const { json.Raw(value.text); }
    void operator()(const std::map<std::string, std::string>* fields) const
    {
        fields != nullptr ? json.Texts(*fields) : json.Null();
    }
};

}  // namespace

void nxRunRecord::Write(const std::optional<std::string>& time, const std::string& job, const char* type,
                        std::span<const Field> fields)
{
    nxTextStream line;
    nxJsonWriter json(line);
    json.BeginObject();
    json.Key("sequence").Count(_sequence + 1);
    json.Key("time");
    time ? json.Text(*time) : json.Null();
    json.Key("job").Text(job);
    json.Key("type").Text(type);
    for (const Field& field : fields) {
        json.Key(field.name);
        std::visit(Value{json}, field.value);
    }
    json.EndObject();
    line << "\n";
    _file.Write(line.view());
    ++_sequence;  // not of a line for which there was no memory
}

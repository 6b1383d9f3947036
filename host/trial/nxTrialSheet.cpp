#include "host/trial/nxTrialSheet.h"

#include <algorithm>
#include <ctime>
#include <sstream>
#include <stdexcept>

#include "host/sandbox/nxStrictLimits.h"
#include "host/trial/nxTrialTexts.h"
#include "scriptFramework/lua/nxLuaEngine.h"
#include "scriptFramework/lua/nxLuaFunction.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

namespace {

// A text on its way to a function in Lua, and what that makes of it.
class Exchange
{
public:
    static constexpr const char* className = "nxTrialExchange";
    static const nxLuaWrapper<Exchange>::FunctionType Functions[];
    static const nxLuaWrapper<Exchange>::PropertyType Properties[];

    std::string text;

    bool Get_text(nxLuaResults& results)
    {
        results.Add(text);
        return true;
    }
    bool Set_text(const nxLuaParameter& value)
    {
        text = value.GetString();
        return true;
    }
};

constexpr nxLuaWrapper<Exchange>::FunctionType Exchange::Functions[] = {
    {nullptr, nullptr},
};

constexpr nxLuaWrapper<Exchange>::PropertyType Exchange::Properties[] = {
    {"text", &Exchange::Get_text, &Exchange::Set_text},
    {nullptr, nullptr, nullptr},
};

class Engine : public nxLuaEngine
{
public:
    Engine()
    {
        nxScriptLimits limits = nxGetStrictLimits();
        limits.instructions = 100'000'000;  // far more than a description needs
        SetLimits(limits);
        _Restrict({[] { return static_cast<long long>(std::time(nullptr)); }, [] { return 0.0; },
                   [](const std::string&) {}});
    }

private:
    void _RegisterCustomObjects() override { nxLuaWrapper<Exchange>::Register(_GetState()); }
};

}  // namespace

std::string nxTrialSheet::_Call(const char* function, const std::string& text) const
{
    Engine engine;
    Exchange exchange;
    exchange.text = text;
    if (!engine.LoadText(nxTrialCollectText())) throw std::runtime_error(engine.GetLastError());
    engine.SetScriptHelper(_source.GetHelper());
    if (!engine.LoadText(_source.GetText()) || !nxLuaFunction(engine, function).Call(exchange))
        throw std::runtime_error(_source.Explain(engine.GetLastError()).message);
    return exchange.text;
}

std::vector<std::string> nxTrialSheet::ListTests() const
{
    std::vector<std::string> names;
    std::istringstream stream(_Call("listTests", {}));
    for (std::string name; std::getline(stream, name);)
        names.push_back(name);
    std::ranges::stable_sort(names, {}, [this](const std::string& name) {
        const auto end = [&](std::size_t place) { return _source.GetText().find_first_of("( =\t", place); };
        std::size_t place = _source.GetText().find(name);
        while (place != std::string::npos && end(place) != place + name.size())
            place = _source.GetText().find(name, place + 1);
        return place;
    });
    return names;
}

nxTrialSheet::Json nxTrialSheet::Describe(const std::string& test) const
{
    return Json::parse(_Call("describeTest", test)).at("keys");
}

unsigned int nxTrialSheet::FindLine(unsigned int line, const std::string& text) const
{
    const std::vector<std::string>& lines = _source.GetFiles().front().lines;
    for (std::size_t i = std::max(line, 1u) - 1; i < lines.size(); ++i)
        if (lines[i].find(text) != std::string::npos) return static_cast<unsigned int>(i + 1);
    return line;
}

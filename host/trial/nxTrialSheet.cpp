#include "host/trial/nxTrialSheet.h"

#include <algorithm>
#include <ctime>
#include <sstream>
#include <stdexcept>

#include "host/author/nxTextExchange.h"
#include "host/sandbox/nxStrictLimits.h"
#include "host/trial/nxTrialTexts.h"
#include "scriptFramework/lua/nxLuaEngine.h"
#include "scriptFramework/lua/nxLuaFunction.h"

namespace {

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
    void _RegisterCustomObjects() override { nxLuaWrapper<nxTextExchange>::Register(_GetState()); }
};

}  // namespace

std::string nxTrialSheet::_Call(const char* function, const std::string& text) const
{
    Engine engine;
    nxTextExchange exchange(text);
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
    return names;
}

nxTrialSheet::Json nxTrialSheet::Describe(const std::string& test) const
{
    const std::string text = _Call("describeTest", test);
    try {
        return Json::parse(text).at("keys");
    } catch (const Json::parse_error&) {
        throw std::runtime_error("a text that " + test + " gives is not UTF-8");
    }
}

unsigned int nxTrialSheet::FindLine(unsigned int line, const std::string& text) const
{
    const std::vector<std::string>& lines = _source.GetFiles().front().lines;
    for (std::size_t i = std::max(line, 1u) - 1; i < lines.size(); ++i)
        if (lines[i].find(text) != std::string::npos) return static_cast<unsigned int>(i + 1);
    return line;
}

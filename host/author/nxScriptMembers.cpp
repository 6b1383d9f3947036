#include "host/author/nxScriptMembers.h"

#include "host/author/nxAuthorTexts.h"
#include "host/author/nxScriptNames.h"
#include "scriptFramework/lua/nxLuaFunction.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

namespace {

// A text on its way to a function in Lua, and what that makes of it.
class Exchange
{
public:
    static constexpr const char* className = "nxScriptMembersExchange";
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

constexpr const char* Entries = R"(
function writeDefinitions(exchange) exchange.text = definitions() end
function writePage(exchange) exchange.text = refresh(exchange.text) end
)";

}  // namespace

std::string nxScriptMembersText()
{
    return nxScriptNamesText() + "membersText = [==[\n" + nxAuthorMembersText() + "]==]\n" +
           nxAuthorReadMembersText();
}

void nxScriptMembers::Engine::_RegisterCustomObjects()
{
    nxLuaWrapper<Exchange>::Register(_GetState());
}

bool nxScriptMembers::Load(std::string& error)
{
    for (const std::string& text :
         {nxScriptMembersText(), nxAuthorDefinitionsText(), nxAuthorTablesText(), std::string(Entries)})
    {
        if (_engine.LoadText(text)) continue;
        error = _engine.GetLastError();
        return false;
    }
    return true;
}

bool nxScriptMembers::_Call(const char* function, std::string& text, std::string& error)
{
    Exchange exchange;
    exchange.text = text;
    if (!nxLuaFunction(_engine, function).Call(exchange)) {
        error = _engine.GetLastError();
        return false;
    }
    text = exchange.text;
    return true;
}

bool nxScriptMembers::GetDefinitions(std::string& text, std::string& error)
{
    text.clear();
    return _Call("writeDefinitions", text, error);
}

std::string nxScriptMembers::GetSettings(const std::string& library)
{
    return "{\n  \"runtime.version\": \"Lua 5.1\",\n  \"workspace.library\": [\"" + library +
           "\"],\n  \"diagnostics.disable\": [\"lowercase-global\"]\n}\n";
}

bool nxScriptMembers::RefreshPage(std::string& page, std::string& error)
{
    return _Call("writePage", page, error);
}

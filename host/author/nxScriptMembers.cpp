#include "host/author/nxScriptMembers.h"

#include "host/author/nxAuthorTexts.h"
#include "host/author/nxScriptNames.h"
#include "host/author/nxTextExchange.h"
#include "scriptFramework/lua/nxLuaFunction.h"

namespace {

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
    nxLuaWrapper<nxTextExchange>::Register(_GetState());
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
    nxTextExchange exchange(text);
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

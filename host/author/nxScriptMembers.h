#pragma once

#include <string>

#include "scriptFramework/lua/nxLuaEngine.h"

// What a script's author is told of whatever a script finds: members.txt beside the tables that bind. As
// statements of a Lua text over the tables `checker.bound` and `environment` (see nxScriptNamesText) and
// `members` (see read_members.lua). Made anew on each call.
std::string nxScriptMembersText();

// Writes it down for editors and for people. For one thread.
class nxScriptMembers
{
public:
    // False when the texts do not fit together, which is a fault of this program; error tells.
    [[nodiscard]] bool Load(std::string& error);
    // A Lua text that defines nothing, with the annotations of the Lua Language Server.
    [[nodiscard]] bool GetDefinitions(std::string& text, std::string& error);
    // The settings of the Lua Language Server, a .luarc.json, for scripts with the definitions at that path.
    static std::string GetSettings(const std::string& library);
    // A Markdown page with the tables between its marks made anew, see tables.lua.
    [[nodiscard]] bool RefreshPage(std::string& page, std::string& error);

private:
    class Engine : public nxLuaEngine
    {
        void _RegisterCustomObjects() override;
    };

    bool _Call(const char* function, std::string& text, std::string& error);

    Engine _engine;
};

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/author/nxScriptMembers.h"
#include "scriptFramework/job/nxCallback.h"
#include "scriptFramework/lua/nxLuaEngine.h"

// docs/scripting.md, the table of docs/testing.md, and what editors are told, against the tables that bind
// scripts and the texts that the sources raise.

namespace {

constexpr const char* Pages[] = {NX_SOURCE_DIR "/docs/scripting.md", NX_SOURCE_DIR "/docs/testing.md"};

std::string Read(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// What a Lua text over the members finds, "" for nothing.
std::string Ask(const std::string& given, const std::string& test)
{
    nxLuaEngine engine;
    for (const std::string& text :
         {nxScriptMembersText(), given, Read(NX_SOURCE_DIR "/tests/data/author/" + test)})
        if (!engine.LoadText(text)) return engine.GetLastError();
    return "";
}

std::string Quote(const std::string& text)
{
    return "[==[\n" + text + "]==]\n";
}

}  // namespace

// With NX_UPDATE set the pages are written anew: tools/update_scripting_page.
TEST(nxScriptingPage, TablesAreMadeOfTheMembers)
{
    nxScriptMembers members;
    std::string error;
    ASSERT_TRUE(members.Load(error)) << error;
    std::string all;
    for (const char* path : Pages) {
        const std::string page = Read(path);
        std::string fresh = page;
        ASSERT_TRUE(members.RefreshPage(fresh, error)) << error;
        if (std::getenv("NX_UPDATE") != nullptr) std::ofstream(path) << fresh;
        EXPECT_EQ(page, fresh) << "run tools/update_scripting_page";
        all += page;
    }
    EXPECT_EQ(Ask("page = " + Quote(all), "page.lua"), "");
}

// A member of a bound table without type, unit or sentence, a class without a description, an error text that
// no source has.
TEST(nxScriptMembers, TellOfAllThatIsBound)
{
    std::string given = "callbacks = {";
    for (const char* name : nxCallbackNames)
        given += std::string("'") + name + "',";
    given += "}\nsources = ";
    std::string sources;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(NX_SOURCE_DIR "/scriptFramework"))
        if (entry.path().extension() == ".cpp" || entry.path().extension() == ".lua")
            sources += Read(entry.path());
    EXPECT_EQ(Ask(given + Quote(sources), "members.lua"), "");
}

TEST(nxScriptMembers, DefinitionsForEditorsAreLuaAndTellOfAllThatIsBound)
{
    nxScriptMembers members;
    std::string text, error;
    ASSERT_TRUE(members.Load(error) && members.GetDefinitions(text, error)) << error;
    nxLuaEngine engine;
    EXPECT_TRUE(engine.LoadText(text)) << engine.GetLastError();
    EXPECT_EQ(Ask("definitions = " + Quote(text), "definitions.lua"), "");
}

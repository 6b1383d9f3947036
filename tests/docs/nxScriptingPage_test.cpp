#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "host/check/nxScriptNames.h"
#include "scriptFramework/job/nxCallback.h"

// docs/scripting.md against the tables that bind scripts: what is bound is described, and what is described
// is bound.

namespace {

using Names = std::set<std::string>;

// The section that describes each class. Its members stand in the first cells of the tables whose heading row
// begins with one of: Function, Property, Member, Name.
const std::map<std::string, std::string> SectionClasses = {
    {"job", "nxAlgoJobObject"},
    {"watched jobs", "nxAlgoVorantJobCollectionObject"},
    {"watched job", "nxAlgoVorantJobObject"},
    {"product", "nxAlgoProductObject"},
    {"tickDataCollection", "nxAlgoTickDataCollectionObject"},
    {"bar", "nxAlgoTickDataObject"},
    {"indicator", "nxAlgoIndicatorObject"},
    {"order", "nxAlgoOrderObject"},
    {"order state", "nxAlgoOrderStateObject"},
    {"order updates", "nxAlgoOrderUpdateObject"},
    {"orders", "nxAlgoOrderCollectionObject"},
    {"price", "nxAlgoPriceObject"},
    {"depth", "nxAlgoMarketDepthObject"},
    {"state", "nxAlgoStateObject"},
    {"position", "nxAlgoPositionObject"},
    {"priceTradeVolumes", "nxAlgoPriceTradeVolumesObject"},
    {"trade window", "nxAlgoEventWindowObject"},
    {"data series", "nxAlgoDataSeriesObject"},
    {"matrix", "nxAlgoMatrixObject"},
    {"quant", "nxAlgoQuantObject"},
    {"data store", "nxAlgoDataStoreObject"},
    {"clock", "nxAlgoClockObject"},
    {"date", "nxAlgoDateObject"},
};

Names FindAll(const std::string& text, const char* pattern)
{
    const std::regex expression(pattern);
    Names names;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match)
        names.insert((*match)[1]);
    return names;
}

// "class function()", "class property" and, where scripts may write it, "class property =". Left out is the
// one class of which no script can get an object.
Names GetBoundMembers()
{
    Names members;
    const std::string text = nxScriptNamesText();
    const std::regex expression(
        R"(checker\.bound\.(\w+) = \{ functions = \{(.*)\}, properties = \{(.*)\} \})");
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match) {
        if ((*match)[1] == "nxAlgoLibraryObject") continue;
        const std::string name = (*match)[1].str() + " ";
        for (const std::string& function : FindAll((*match)[2], "(\\w+)=true"))
            members.insert(name + function + "()");
        for (const std::string& property : FindAll((*match)[3], "(\\w+)=\"rw?\""))
            members.insert(name + property);
        for (const std::string& property : FindAll((*match)[3], "(\\w+)=\"rw\""))
            members.insert(name + property + " =");
    }
    return members;
}

class Page
{
public:
    Page()
    {
        std::ifstream file(NX_SOURCE_DIR "/docs/scripting.md");
        std::string section;
        bool ofMembers = false;
        for (std::string line, before; std::getline(file, line); before = line) {
            if (line.starts_with("#")) section = line.substr(line.find(' ') + 1);
            if (line.starts_with("|--"))
                ofMembers =
                    std::regex_match(before, std::regex(R"(\| (Function|Property|Member|Name|Callback) .*)"));
            else if (ofMembers && line.starts_with("| "))
                _ReadRow(section, line);
            ofMembers = ofMembers && line.starts_with("|");
        }
    }

    Names callbacks;
    Names members;

private:
    void _ReadRow(const std::string& section, const std::string& line)
    {
        const std::string cell = line.substr(0, line.find(" | "));
        if (section == "Callbacks") callbacks.merge(FindAll(cell, R"(`(\w+)\()"));
        const auto described = SectionClasses.find(section);
        if (described == SectionClasses.end()) return;
        const std::string name = described->second + " ";
        for (const std::string& function : FindAll(cell, R"(`(?:\w+:)?(\w+)[({][^`]*`)"))
            members.insert(name + function + "()");
        for (const std::string& property : FindAll(cell, R"(`(?:\w+)?\.?\b(\w+)`)")) {
            members.insert(name + property);
            if (line.find("can be written") != std::string::npos) members.insert(name + property + " =");
        }
    }
};

TEST(nxScriptingPage, MembersAreThoseThatAreBound)
{
    EXPECT_THAT(Page().members, testing::ContainerEq(GetBoundMembers()));
}

TEST(nxScriptingPage, CallbacksAreThoseThatAreCalled)
{
    EXPECT_THAT(Page().callbacks, testing::UnorderedElementsAreArray(nxCallbackNames));
}

}  // namespace

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

// A folder from which an author starts: a script, tests of it, data for it, types for editors, and a page
// with the commands. For one thread.
class nxScriptProject
{
public:
    // The names of what a script can begin as, the first of them the usual one.
    static std::vector<std::string> GetTemplates();

    // folder: where it will be; the last part of the path is the name of the script, too. templateName: one
    // of GetTemplates.
    nxScriptProject(std::string folder, const std::string& templateName);

    // Null, or why there is no folder. There is one only when all of it was written, and one that was there
    // before is left as it is. goesOn is asked now and then; false ends it as a failure does.
    [[nodiscard]] std::optional<std::string> Write(const std::function<bool()>& goesOn);

    // What is to be run in the folder, as its page has it; after Write.
    const std::vector<std::string>& GetCommands() const { return _commands; }

private:
    struct Template;
    static const Template Templates[];

    [[nodiscard]] std::optional<std::string> _Fill(const std::string& folder,
                                                   const std::function<bool()>& goesOn);
    [[nodiscard]] std::optional<std::string> _WriteData(const std::string& folder,
                                                        const std::function<bool()>& goesOn) const;
    std::string _MakePage();

    const std::string _folder;
    const Template& _template;
    std::string _name;
    std::vector<std::string> _commands;
};

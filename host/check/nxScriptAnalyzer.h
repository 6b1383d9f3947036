#pragma once

#include <string>
#include <vector>

#include "host/check/nxScriptFinding.h"
#include "scriptFramework/lua/nxLuaEngine.h"
#include "scriptFramework/lua/nxLuaWrapper.h"

// The files of one job on their way to the checker, which is written in Lua, and its findings on their way
// back. The checker sees it as the argument of its function; it lives for that call.
class nxScriptAnalysis
{
public:
    static constexpr const char* className = "nxScriptAnalysis";
    static const nxLuaWrapper<nxScriptAnalysis>::FunctionType Functions[];
    static const nxLuaWrapper<nxScriptAnalysis>::PropertyType Properties[];

    struct File
    {
        std::string path;
        std::string text;
    };

    nxScriptAnalysis(const std::vector<File>& files, bool isTest) : _files(files), _isTest(isTest) {}

    std::vector<nxScriptFinding> findings;

    bool count(nxLuaParameters&, nxLuaResults&);
    bool isTest(nxLuaParameters&, nxLuaResults&);
    bool path(nxLuaParameters&, nxLuaResults&);  // (index from 1)
    bool text(nxLuaParameters&, nxLuaResults&);  // (index from 1)
    bool add(nxLuaParameters&, nxLuaResults&);   // (index, line, column, endColumn, code, message)

private:
    const std::vector<File>& _files;
    const bool _isTest;
};

// Finds what is wrong in scripts by reading them, without running them. Stands on the Lua module luacheck,
// found along Lua's own search path. For one thread.
class nxScriptAnalyzer
{
public:
    // Brings up the checker; false, and error tells what is missing and how to get it.
    [[nodiscard]] bool Load(std::string& error);
    // The findings over a job's files, the modules in front of the script; isTest: over one file of tests.
    // False when the checker itself failed.
    [[nodiscard]] bool Analyze(const std::vector<nxScriptAnalysis::File>& files, bool isTest,
                               std::vector<nxScriptFinding>& findings, std::string& error);

private:
    class Engine : public nxLuaEngine
    {
        void _RegisterCustomObjects() override { nxLuaWrapper<nxScriptAnalysis>::Register(_GetState()); }
    };

    Engine _engine;
};

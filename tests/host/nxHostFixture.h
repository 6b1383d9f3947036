#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>  // mkdtemp

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "host/run/nxRun.h"

// A run of the reference host over files that live as long as the test, in a folder of its own, named in all
// texts without that folder. What only goes in and comes out as text is a scenario of tests/data/runs
// instead.
//
// In the data "@12.5" stands for the time 12.5 seconds after 2024-01-08 14:30 UTC, and the logged times of
// that minute are given as "12.500" in turn.
class nxHostRun
{
public:
    nxHostRun()
    {
        std::string pattern = ::testing::TempDir() + "nxHostRun_XXXXXX";
        _folder = std::string(mkdtemp(pattern.data())) + "/";
    }
    ~nxHostRun() { std::filesystem::remove_all(_folder); }
    nxHostRun(const nxHostRun&) = delete;
    nxHostRun& operator=(const nxHostRun&) = delete;

    // Writes a file; `@` is left alone.
    std::string Write(const std::string& name, const std::string& content)
    {
        std::ofstream(_folder + name, std::ios::binary) << content;
        return _folder + name;
    }
    void SetScript(const std::string& text)
    {
        options.jobs.clear();
        AddJob("script", text);
    }
    void AddJob(const std::string& name, const std::string& text)
    {
        nxJobOptions& job = options.jobs.emplace_back();
        job.script = Write(name + ".lua", text);
        job.name = name;
    }
    void AddModule(const std::string& name, const std::string& text)
    {
        options.modules.push_back(Write(name, text));
    }
    // Rows without the header.
    void AddQuotes(std::string rows)
    {
        _Replace(rows, "@", Minute);
        options.data.push_back(
            Write("quotes.csv", "time,product,bid,bidVolume,ask,askVolume,last,lastVolume,side\n" + rows));
    }

    nxRunResult Run()
    {
        std::ostringstream outStream, errStream;
        nxRun server(options, outStream, errStream);
        const nxRunResult result = server.Run();
        statistics = server.GetStatistics();
        out = Hide(outStream.str());
        err = Hide(errStream.str());
        return result;
    }
    // Runs, and gives what the script logged, a line each.
    std::string RunForLog()
    {
        static_cast<void>(Run());
        return out.substr(0, out.find("--- summary\n"));
    }

    // What the summary says under a label; "" when it has no such line.
    std::string GetLine(const std::string& label) const
    {
        const std::size_t line = out.find("\n" + label + " ", out.find("--- summary\n"));
        if (line == std::string::npos) return {};
        const std::size_t begin = out.find_first_not_of(' ', line + 1 + label.size());
        return out.substr(begin, out.find('\n', begin) - begin);
    }
    // What was told on standard error, without the speed.
    std::string GetErrors() const { return err.substr(0, err.find("--- speed\n")); }

    // Without the folder and the minute, as in `out` and `err`.
    std::string Hide(std::string text) const
    {
        _Replace(text, _folder, "");
        _Replace(text, Minute, "");
        return text;
    }

    nxRunOptions options;
    nxRunStatistics statistics;
    std::string out;
    std::string err;

private:
    static constexpr const char* Minute = "20240108:14:30:";

    static void _Replace(std::string& text, const std::string& what, const std::string& with)
    {
        for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
            text.replace(at, what.size(), with);
    }

    std::string _folder;
};

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "scriptFramework/lua/nxScriptHeap.h"
#include "scriptFramework/lua/nxScriptSampler.h"

// What a run tells of where its scripts spend their instructions, their time and their memory. Times are in
// nanoseconds, recorded ones since 1970.
struct nxProfile
{
    struct Callback
    {
        std::string name;
        unsigned long long calls = 0;
        long long nanoseconds = 0;
        long long longest = 0;
        std::optional<long long> longestTime;  // recorded; none in data without rows
        std::string longestEvent;              // what of the data led to it
    };
    // A line of a script, with its text.
    struct Line
    {
        std::string file;
        unsigned int line;
        std::string text;
    };
    struct Heap
    {
        unsigned long long calls;  // of the job before
        nxScriptHeap heap;
    };
    // What one path of the heap has come to.
    struct Growth
    {
        nxScriptHeap::Path now;
        long long bytes = 0;  // more than before
        long long entries = 0;
    };
    struct Job
    {
        std::string name;
        std::vector<nxScriptSampler::Function> functions;
        std::vector<nxScriptSampler::Node> nodes;  // empty: only the memory was looked at
        // By the line of the text that ran, counted from 1; those that no node has are left out.
        std::vector<std::pair<unsigned int, Line>> lines;
        std::vector<Callback> callbacks;
        std::vector<Heap> heaps;  // by calls
        // Of the last heap against that after half as many calls, the most first.
        std::vector<Growth> growth;
        unsigned long long growthCalls = 0;  // between the two; 0: there is one alone
        std::string failure;                 // why the memory could not be looked at
    };

    std::string title;
    std::string program;
    std::vector<std::string> data;
    unsigned int interval = 0;  // instructions
    std::vector<Job> jobs;
};

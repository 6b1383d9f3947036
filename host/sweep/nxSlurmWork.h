#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

// What a sweep on a cluster is, as its folder keeps it for whoever goes on with it. A value.
struct nxSlurmWork
{
    std::string program = {};                 // absolute path
    std::vector<std::string> arguments = {};  // "sweep SCRIPT ...", without what a slice or the merge adds
    std::string directory = {};               // in which they mean what they say
    std::string output = {};                  // absolute path of the merged results
    std::string version = {};
    std::string inputs = {};      // hash of script, data and plan; empty: not known
    unsigned long long runs = 0;  // 0: not known
    unsigned int slices = 1;
    unsigned int chunk = 1000;  // slices of one array; as Slurm numbers tasks, at most its MaxArraySize

    // Of what must be the same for slices to belong together: all but the sizes.
    std::string GetHash() const;
    // The slices of the array that begins with this one, which is a multiple of the chunk: so many.
    unsigned int GetArraySize(unsigned int begin) const { return std::min(chunk, slices - begin); }

    // As JSON. Null, or what is wrong.
    [[nodiscard]] std::optional<std::string> GetText(std::string& text) const;
    [[nodiscard]] std::optional<std::string> SetFromText(const std::string& text);
};

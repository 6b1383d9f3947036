#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <vector>

// The files that a command is going to read and to write, held against each other before any is opened for
// writing. They are told apart by device and inode, so another path or a link to a file counts as that file.
class nxRunFiles
{
public:
    // "-" is standard input.
    void AddInput(const std::string& path) { _inputs.push_back({path, _Look(path, path == "-" ? 0 : -1)}); }
    void AddInputs(const std::vector<std::string>& paths);
    // `option` is what names it, for the message; "-" is standard output.
    void AddOutput(const std::string& option, const std::string& path)
    {
        if (path != "-") _outputs.push_back({option + " " + path, _Look(path, -1)});
    }

    // Null, or what is wrong: standard input or another pipe is to be read twice, or an output, standard
    // output among them, is also an input or another output.
    [[nodiscard]] std::optional<std::string> FindClash() const;

    // Whether a second reading gives the same again, as that of a pipe does not. Also true of what is missing
    // or a folder.
    static bool CanBeReadAgain(const std::string& path);

private:
    using Identity = std::optional<struct stat>;  // none: there is no such file yet

    struct File
    {
        std::string name;
        Identity identity;
    };

    // A descriptor of 0 or above goes before the path.
    static Identity _Look(const std::string& path, int descriptor);
    static bool _IsSame(const File& a, const File& b, bool areStreams);

    std::vector<File> _inputs;
    std::vector<File> _outputs;
};

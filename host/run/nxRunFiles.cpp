#include "host/run/nxRunFiles.h"

#include <unistd.h>

#include <algorithm>

void nxRunFiles::AddInputs(const std::vector<std::string>& paths)
{
    for (const std::string& path : paths)
        AddInput(path);
}

std::optional<std::string> nxRunFiles::FindClash() const
{
    for (auto input = _inputs.begin(); input != _inputs.end(); ++input) {
        const auto first = std::find_if(_inputs.begin(), input, [input](const File& earlier) {
            return (earlier.name == "-" && input->name == "-") || _IsSame(earlier, *input, true);
        });
        if (first == input) continue;
        if (input->name == "-" && first->name == "-") return "-: standard input can be read only once";
        return input->name + ": is the same pipe as " + first->name + ", and can be read only once";
    }
    std::vector<File> outputs = {{"standard output", _Look({}, STDOUT_FILENO)}};
    outputs.insert(outputs.end(), _outputs.begin(), _outputs.end());
    for (auto output = outputs.begin(); output != outputs.end(); ++output) {
        const auto isSame = [output](const File& other) { return _IsSame(other, *output, false); };
        if (const auto input = std::ranges::find_if(_inputs, isSame); input != _inputs.end())
            return output->name + ": would be written over " + input->name + ", which is read";
        if (const auto first = std::find_if(outputs.begin(), output, isSame); first != output)
            return output->name + ": is the same file as " + first->name;
    }
    return std::nullopt;
}

bool nxRunFiles::CanBeReadAgain(const std::string& path)
{
    if (path == "-") return false;
    const Identity identity = _Look(path, -1);
    return !identity || S_ISREG(identity->st_mode) || S_ISDIR(identity->st_mode) ||
           S_ISBLK(identity->st_mode);
}

nxRunFiles::Identity nxRunFiles::_Look(const std::string& path, int descriptor)
{
    struct stat status;
    const bool isThere = (descriptor >= 0 ? fstat(descriptor, &status) : stat(path.c_str(), &status)) == 0;
    return isThere ? Identity(status) : std::nullopt;
}

bool nxRunFiles::_IsSame(const File& a, const File& b, bool areStreams)
{
    if (!a.identity || !b.identity || a.identity->st_dev != b.identity->st_dev ||
        a.identity->st_ino != b.identity->st_ino)
        return false;
    // A terminal or /dev/null serves any number of readers and writers.
    const mode_t mode = a.identity->st_mode;
    return S_ISFIFO(mode) || (areStreams ? S_ISSOCK(mode) : S_ISREG(mode));
}

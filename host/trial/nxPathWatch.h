#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

// Tells when files change: are written, or come, go or are exchanged by a rename, as editors save. It looks
// at their folders, so a file or a folder may be missing for a while. Linux's inotify; used by one thread.
class nxPathWatch
{
public:
    // Paths of files; folders, for the files in them; or patterns of the shell. What is written by the runs
    // themselves is of no interest.
    nxPathWatch(const std::vector<std::string>& paths, const std::vector<std::string>& outputs);
    ~nxPathWatch();
    nxPathWatch(const nxPathWatch&) = delete;
    nxPathWatch& operator=(const nxPathWatch&) = delete;

    // Null, or why nothing can be watched.
    const std::optional<std::string>& GetError() const { return _error; }
    // What is to be polled: readable when there is something to take.
    int GetDescriptor() const { return _descriptor; }
    // The first file that has changed since the last call; none: none has. Does not wait. To be called twice
    // a second even when there is nothing to read: a folder that was away is found again by that.
    [[nodiscard]] std::optional<std::string> Take();

private:
    struct Target
    {
        std::string folder;
        std::string pattern;  // of names in it
    };

    void _Add(const std::string& path);
    void _Attach(std::optional<std::string>& changed);
    void _Read(std::optional<std::string>& changed);
    void _Forget(int watch, std::optional<std::string>& changed);
    std::optional<std::string> _Find(int watch, const std::string& name) const;
    bool _IsOutput(const std::string& path) const;

    int _descriptor;
    std::optional<std::string> _error;
    std::vector<Target> _targets;
    const std::vector<std::string> _outputs;
    std::map<std::string, int> _watches;  // by folder
    bool _isAttached = false;             // once
};

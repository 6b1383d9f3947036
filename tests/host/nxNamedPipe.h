#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "tests/host/nxFeedFixture.h"

// A pipe with a name, whose writing end stays open until the test closes it.
class nxNamedPipe
{
public:
    explicit nxNamedPipe(const std::string& content)
    {
        std::remove(_file.GetPath().c_str());
        EXPECT_EQ(mkfifo(_file.GetPath().c_str(), 0600), 0);
        _writer = std::thread([this, content] {
            _end = open(_file.GetPath().c_str(), O_WRONLY);
            EXPECT_EQ(write(_end, content.data(), content.size()), static_cast<ssize_t>(content.size()));
        });
    }
    ~nxNamedPipe()
    {
        if (_writer.joinable()) _writer.join();
        close(_end);
    }
    const std::string& GetPath() const { return _file.GetPath(); }
    // All that was written has been read.
    void WaitUntilEmpty() { _writer.join(); }

private:
    nxFeedFile _file{""};
    std::thread _writer;
    int _end = -1;
};

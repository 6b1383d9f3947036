#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

// One end of a way between two of a debugger's processes, on which whole messages go, and open descriptors
// with them. Owns its descriptor. One thread uses an end.
class nxDebugChannel
{
public:
    using Json = nlohmann::json;

    explicit nxDebugChannel(int descriptor = -1) : _descriptor(descriptor) {}
    nxDebugChannel(nxDebugChannel&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) {}
    nxDebugChannel& operator=(nxDebugChannel&& other) noexcept;
    ~nxDebugChannel() { Close(); }

    // Both ends; without descriptors where there are none to be had.
    static std::pair<nxDebugChannel, nxDebugChannel> MakePair();

    bool IsOpen() const { return _descriptor >= 0; }
    int Get() const { return _descriptor; }
    int Release() { return std::exchange(_descriptor, -1); }
    void Close();

    // Waits until the other end has room. The descriptor stays the caller's. False: the other end is gone.
    bool Send(const Json& message, int descriptor = -1);
    // Waits for a message, and takes the descriptor that came with it, if one did. None: the other end is
    // gone.
    std::optional<Json> Receive(nxDebugChannel* descriptor = nullptr);
    // There is something to receive, or the other end is gone.
    bool IsReady() const;

private:
    bool _ReceiveBytes(char* to, std::size_t size, nxDebugChannel* descriptor);

    int _descriptor;
};

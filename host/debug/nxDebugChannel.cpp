#include "host/debug/nxDebugChannel.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>

#include "host/debug/nxBoundedJson.h"

nxDebugChannel& nxDebugChannel::operator=(nxDebugChannel&& other) noexcept
{
    if (this == &other) return *this;
    Close();
    _descriptor = other.Release();
    return *this;
}

std::pair<nxDebugChannel, nxDebugChannel> nxDebugChannel::MakePair()
{
    int ends[2] = {-1, -1};
    static_cast<void>(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends));
    return {nxDebugChannel(ends[0]), nxDebugChannel(ends[1])};
}

void nxDebugChannel::Close()
{
    if (_descriptor >= 0) close(Release());
}

// A message is its size in four bytes, with which a descriptor goes, and its text.
bool nxDebugChannel::Send(const Json& message, int descriptor)
{
    const std::string text = message.dump(-1, ' ', false, Json::error_handler_t::replace);
    auto size = static_cast<std::uint32_t>(text.size());
    iovec parts[2] = {{&size, sizeof size}, {const_cast<char*>(text.data()), text.size()}};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof descriptor)] = {};
    msghdr header = {};
    header.msg_iov = parts;
    header.msg_iovlen = 2;
    if (descriptor >= 0) {
        header.msg_control = control;
        header.msg_controllen = sizeof control;
        cmsghdr* const item = CMSG_FIRSTHDR(&header);
        item->cmsg_level = SOL_SOCKET;
        item->cmsg_type = SCM_RIGHTS;
        item->cmsg_len = CMSG_LEN(sizeof descriptor);
        std::memcpy(CMSG_DATA(item), &descriptor, sizeof descriptor);
    }
    for (std::size_t left = sizeof size + text.size(); left != 0;) {
        const ssize_t sent = sendmsg(_descriptor, &header, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent <= 0) return false;
        left -= static_cast<std::size_t>(sent);
        header.msg_control = nullptr;
        header.msg_controllen = 0;
        auto done = static_cast<std::size_t>(sent);
        for (iovec& part : parts) {
            const std::size_t taken = std::min(done, part.iov_len);
            part.iov_base = static_cast<char*>(part.iov_base) + taken;
            part.iov_len -= taken;
            done -= taken;
        }
    }
    return true;
}

bool nxDebugChannel::_ReceiveBytes(char* to, std::size_t size, nxDebugChannel* descriptor)
{
    while (size != 0) {
        iovec part = {to, size};
        int taken = -1;
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof taken)] = {};
        msghdr header = {};
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        header.msg_control = control;
        header.msg_controllen = sizeof control;
        const ssize_t count = recvmsg(_descriptor, &header, MSG_CMSG_CLOEXEC);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        const cmsghdr* const item = CMSG_FIRSTHDR(&header);
        if (item != nullptr && item->cmsg_type == SCM_RIGHTS) {
            std::memcpy(&taken, CMSG_DATA(item), sizeof taken);
            nxDebugChannel owner(taken);
            if (descriptor != nullptr) *descriptor = std::move(owner);
        }
        to += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

std::optional<nxDebugChannel::Json> nxDebugChannel::Receive(nxDebugChannel* descriptor)
{
    std::uint32_t size = 0;
    if (!_ReceiveBytes(reinterpret_cast<char*>(&size), sizeof size, descriptor)) return std::nullopt;
    constexpr std::uint32_t most = 1 << 28;  // bytes, more than any message has
    if (size > most) return std::nullopt;
    std::string text(size, '\0');
    if (!_ReceiveBytes(text.data(), text.size(), descriptor)) return std::nullopt;
    Json message = nxReadBoundedJson(text);
    if (!message.is_object()) return std::nullopt;
    return message;
}

bool nxDebugChannel::IsReady() const
{
    pollfd end{_descriptor, POLLIN, 0};
    return poll(&end, 1, 0) > 0;
}

#include "platform/host/process/MessageSocket.h"

#include "platform/host/process/ProcessorCount.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>

namespace kestrine {

namespace {

/// The space for the descriptors of a message.
struct Control {
    alignas(cmsghdr) std::array<char, CMSG_SPACE(MessageSocket::maxFiles * sizeof(int))> bytes{};
};

void attach(msghdr& message, Control& control, std::span<const int> files) {
    message.msg_control = control.bytes.data();
    message.msg_controllen = CMSG_SPACE(files.size_bytes());
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(files.size_bytes());
    std::memcpy(CMSG_DATA(header), files.data(), files.size_bytes());
}

std::vector<FileDescriptor> attachedFiles(msghdr& message) {
    std::vector<FileDescriptor> files;
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr;
         header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS)
            continue;
        const std::size_t count = (header->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < count; ++i) {
            int number = -1;
            std::memcpy(&number, CMSG_DATA(header) + i * sizeof(int), sizeof number);
            files.emplace_back(number);
        }
    }
    return files;
}

/// The events of the socket within `milliseconds`, the end of the connection included.
short eventsOf(int socket, short events, int milliseconds) {
    pollfd state{socket, events, 0};
    while (::poll(&state, 1, milliseconds) < 0 && errno == EINTR) {
    }
    return state.revents;
}

} // namespace

Result<std::pair<MessageSocket, MessageSocket>> MessageSocket::pair() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        return systemFailure("cannot make a connection between processes");
    FileDescriptor one(ends[0]), other(ends[1]);
    return std::pair{MessageSocket(std::move(one)), MessageSocket(std::move(other))};
}

Result<void> MessageSocket::send(ByteView bytes, std::span<const int> files) const {
    // An empty message would look like the end of the connection.
    if (bytes.empty() || bytes.size() > maxBytes || files.size() > maxFiles)
        return Failure{Reason::tooLarge, "a message between processes is empty or too long"};
    iovec content{const_cast<std::uint8_t*>(bytes.data()), bytes.size()};
    msghdr message{};
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    Control control;
    if (!files.empty())
        attach(message, control, files);
    while (::sendmsg(number(), &message, MSG_NOSIGNAL) < 0)
        if (errno != EINTR)
            return systemFailure("cannot send a message to another process");
    return {};
}

Result<std::optional<Message>> MessageSocket::receive(bool acceptsFiles) const {
    std::array<std::uint8_t, maxBytes> buffer; // not initialised
    iovec content{buffer.data(), buffer.size()};
    msghdr message{};
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    Control control;
    if (acceptsFiles) {
        message.msg_control = control.bytes.data();
        message.msg_controllen = control.bytes.size();
    }
    ssize_t count = 0;
    do
        count = ::recvmsg(number(), &message, MSG_CMSG_CLOEXEC);
    while (count < 0 && errno == EINTR);
    if (count < 0 && errno == ECONNRESET) // closed without reading everything
        return std::optional<Message>();
    if (count < 0)
        return systemFailure("cannot receive a message from another process");
    std::vector<FileDescriptor> files;
    if (acceptsFiles)
        files = attachedFiles(message);
    if ((message.msg_flags & (acceptsFiles ? MSG_TRUNC | MSG_CTRUNC : MSG_TRUNC)) != 0)
        return Failure{Reason::tooLarge,
                       "a message from another process is too long, or too many files are open"};
    if (count == 0)
        return std::optional<Message>();
    return std::optional(Message{Bytes(buffer.begin(), buffer.begin() + count), std::move(files)});
}

bool MessageSocket::waitForMessage(int milliseconds) const {
    return eventsOf(number(), POLLIN, milliseconds) != 0;
}

bool MessageSocket::isMessageSoon() const {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::microseconds soon{100};
    static const bool canWait = processorCount() > 1;
    const Clock::time_point end = Clock::now() + soon;
    while (!waitForMessage(0))
        if (!canWait || Clock::now() > end)
            return false;
    return true;
}

bool MessageSocket::isConnected() const { return (eventsOf(number(), 0, 0) & (POLLHUP | POLLERR)) == 0; }

} // namespace kestrine

// MessageSocket: one end of a connection between two processes of this program.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/files/FileDescriptor.h"

#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace kestrine {

struct Message {
    Bytes bytes;
    std::vector<FileDescriptor> files;
};

/// One end of a pair of connected sockets that keep message boundaries. Move-only. Not thread-safe.
class MessageSocket {
public:
    static constexpr std::size_t maxBytes = 64 * 1024;
    static constexpr std::size_t maxFiles = 4;

    /// Two ends that are connected with each other. Programs that this process starts do not inherit them.
    static Result<std::pair<MessageSocket, MessageSocket>> pair();

    explicit MessageSocket(FileDescriptor end) : end_(std::move(end)) {}

    /// Sends 1 to maxBytes bytes and copies of at most maxFiles descriptors. Blocks while the queue of the
    /// other end is full. Fails if the other end is closed, without SIGPIPE.
    Result<void> send(ByteView bytes, std::span<const int> files = {}) const;

    /// Waits for a message. Empty when the other end is closed. Without `acceptsFiles`, no descriptor is ever
    /// taken from the other end. Fails with tooLarge for a message above the limits.
    Result<std::optional<Message>> receive(bool acceptsFiles) const;

    /// Whether a message, or the end of the connection, is there within `milliseconds`.
    bool waitForMessage(int milliseconds) const;

    /// The same within 100 microseconds, without sleeping: waking up costs as much. Does not wait where there
    /// is only one processor.
    bool isMessageSoon() const;

    /// Whether the other end is still open.
    bool isConnected() const;

    /// The descriptor, which this object keeps.
    int number() const { return end_.number(); }

private:
    FileDescriptor end_;
};

} // namespace kestrine

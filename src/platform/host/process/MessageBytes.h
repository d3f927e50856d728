// MessageWriter and MessageReader: numbers and byte strings in messages between processes of this program.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/StringBytes.h"

#include <cstring>
#include <string>
#include <type_traits>

namespace kestrine {

template <class T>
concept MessageNumber = (std::is_arithmetic_v<T> && !std::is_same_v<T, bool>) || std::is_enum_v<T>;

/// Both ends run on one machine, so numbers have its byte order.
class MessageWriter {
public:
    template <MessageNumber T>
    void add(T number) {
        const auto* first = reinterpret_cast<const std::uint8_t*>(&number);
        bytes_.insert(bytes_.end(), first, first + sizeof number);
    }
    void add(bool flag) { add(static_cast<std::uint8_t>(flag)); }
    void add(ByteView bytes) {
        add(std::uint64_t{bytes.size()});
        bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    }
    void add(const std::string& text) { add(bytesOf(text)); }

    Bytes take() && { return std::move(bytes_); }

private:
    Bytes bytes_;
};

/// Reads what a MessageWriter wrote, from a process that may be hostile. After the first thing that is not
/// there or not allowed, everything reads as 0 or empty, and ok() is false.
class MessageReader {
public:
    explicit MessageReader(ByteView message) : rest_(message) {}

    template <MessageNumber T>
    requires(!std::is_enum_v<T>) T number() {
        T number{};
        const ByteView bytes = take(sizeof number);
        if (!bytes.empty())
            std::memcpy(&number, bytes.data(), sizeof number);
        return number;
    }
    bool flag() { return limited(number<std::uint8_t>(), std::uint8_t{1}) != 0; }
    /// An enumerator from 0 to `last`.
    template <class E>
    E enumerator(E last) {
        using Number = std::underlying_type_t<E>;
        return static_cast<E>(limited(number<Number>(), static_cast<Number>(last)));
    }
    /// A byte string of at most `limit` bytes, which is part of the message.
    ByteView bytes(std::uint64_t limit) { return take(limited(number<std::uint64_t>(), limit)); }
    std::string text(std::uint64_t limit) {
        const ByteView content = bytes(limit);
        return {content.begin(), content.end()};
    }
    /// How many things follow that have at least `bytesEach` bytes.
    std::uint64_t count(std::size_t bytesEach) {
        return limited(number<std::uint64_t>(), std::uint64_t{rest_.size() / bytesEach});
    }
    void refuseUnless(bool isAllowed) { ok_ = ok_ && isAllowed; }

    bool ok() const { return ok_; }
    /// Whether everything was there and allowed, and nothing is left.
    bool isComplete() const { return ok_ && rest_.empty(); }

private:
    template <class T>
    T limited(T value, T limit) {
        refuseUnless(value <= limit);
        return ok_ ? value : T{};
    }
    ByteView take(std::uint64_t count) {
        refuseUnless(count <= rest_.size());
        if (!ok_)
            return {};
        const ByteView taken = rest_.first(static_cast<std::size_t>(count));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

    ByteView rest_;
    bool ok_ = true;
};

} // namespace kestrine

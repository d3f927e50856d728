// Result<T>: a value or a failure.
#pragma once

#include <cassert>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>

namespace kestrine {

/// The kind of a failure. The numbers are stable because they may cross a process boundary.
enum class Reason : std::uint8_t {
    notFound = 1,       ///< nothing exists under that name
    alreadyExists = 2,  ///< something exists under that name and must not be replaced
    notPermitted = 3,   ///< the system denied access
    notRegularFile = 4, ///< a folder, pipe, device or socket instead of a file
    tooLarge = 5,       ///< above a limit of this program or of the format
    malformed = 6,      ///< the bytes violate their format
    truncated = 7,      ///< the bytes end too early
    unsupported = 8,    ///< valid, but not supported
    noSpace = 9,        ///< the disk is full or a quota is reached
    inputOutput = 10,   ///< any other system error
    refused = 11,       ///< forbidden by a rule of this program
    empty = 12,         ///< a result without content, such as a picture of width zero
    crashed = 13,       ///< the process that did the work ended before it gave a result
    timeLimit = 14,     ///< the work took more time than it may, and was ended
    outOfMemory = 15,   ///< there is not enough memory
    implausible = 16,   ///< a file that is too short for what it claims to hold
    otherFormat = 17,   ///< the same signature as the expected format, but another format
};

/// A reason for programs and a message for people, without a full stop or newline at the end.
struct Failure {
    Reason reason;
    std::string text;
};

/// Either a T or a Failure. Accessing the one that is absent is a programming error.
template <class T>
class [[nodiscard]] Result {
public:
    Result(T value) : content_(std::in_place_index<0>, std::move(value)) {}
    Result(Failure failure) : content_(std::in_place_index<1>, std::move(failure)) {}

    bool ok() const { return content_.index() == 0; }
    explicit operator bool() const { return ok(); }

    T& value() & { return assert(ok()), *std::get_if<0>(&content_); }
    const T& value() const& { return assert(ok()), *std::get_if<0>(&content_); }
    T&& value() && { return assert(ok()), std::move(*std::get_if<0>(&content_)); }
    T& operator*() & { return value(); }
    const T& operator*() const& { return value(); }
    T&& operator*() && { return std::move(*this).value(); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

    const Failure& failure() const { return assert(!ok()), *std::get_if<1>(&content_); }

    /// Moves the value out.
    T take() && { return std::move(*this).value(); }

private:
    std::variant<T, Failure> content_;
};

/// Success without a value, or a Failure.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Failure failure) : failure_(std::move(failure)), ok_(false) {}

    bool ok() const { return ok_; }
    explicit operator bool() const { return ok_; }
    const Failure& failure() const { return assert(!ok_), failure_; }

    void take() && { assert(ok_); }

private:
    Failure failure_{};
    bool ok_ = true;
};

} // namespace kestrine

/// Evaluates a Result. On success TRY gives its value, if it has one. On failure the enclosing function
/// returns the failure. Example: `const Bytes bytes = TRY(readSmallFile(path, limit));`. It is a statement
/// expression, which GCC and clang support.
#define TRY(...)                                                                                             \
    ({                                                                                                       \
        auto tried = (__VA_ARGS__);                                                                          \
        if (!tried)                                                                                          \
            return tried.failure();                                                                          \
        std::move(tried).take();                                                                             \
    })

// Result<T>: a value, or the reason why there is none.
#pragma once

#include <cassert>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>

namespace kestrine {

/// What kind of failure it was. The numbers are stable: they may cross a process boundary.
enum class Reason : std::uint8_t {
    notFound = 1,       ///< nothing exists under that name
    alreadyExists = 2,  ///< something exists under that name and may not be replaced
    notPermitted = 3,   ///< the system refused for lack of rights
    notRegularFile = 4, ///< a folder, pipe, device or socket where a file was expected
    tooLarge = 5,       ///< beyond a bound of ours or of the format
    malformed = 6,      ///< the bytes break the rules of their format
    truncated = 7,      ///< the bytes end too early
    unsupported = 8,    ///< correct, but a kind that is not handled
    noSpace = 9,        ///< the disk or a quota is full
    inputOutput = 10,   ///< any other failure of the system
    refused = 11,       ///< a rule of ours forbids it
    empty = 12,         ///< a result without any content, such as a picture of zero width
};

/// A reason for programs and a sentence (no full stop, no newline) for people.
struct Failure {
    Reason reason;
    std::string text;
};

/// Either a T or a Failure. Asking for the one that is not there is a programming error.
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

    /// The value itself, moved out.
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

/// The value of a Result, or nothing for Result<void>; on failure the enclosing function returns the failure.
/// `const Bytes bytes = TRY(readSmallFile(path, limit));` A statement expression, as GCC and clang have them.
#define TRY(...)                                                                                             \
    ({                                                                                                       \
        auto tried = (__VA_ARGS__);                                                                          \
        if (!tried)                                                                                          \
            return tried.failure();                                                                          \
        std::move(tried).take();                                                                             \
    })

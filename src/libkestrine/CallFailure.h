// CallFailure: why a function of the C interface failed, and how callers learn of it.
#pragma once

#include "libkestrine/kestrine.h"
#include "platform/host/Result.h"

#include <new>
#include <string>
#include <variant>

namespace kestrine {

struct CallFailure {
    kestrine_status status;
    std::string text; ///< a sentence without full stop
};

CallFailure callFailure(const Failure& failure);
CallFailure nullArgument(const char* name);

/// A value or a CallFailure; for TRY.
template <class T>
class [[nodiscard]] CallResult {
public:
    CallResult() = default;
    CallResult(T value) : content_(std::move(value)) {}
    CallResult(CallFailure failure) : content_(std::move(failure)) {}

    explicit operator bool() const { return !std::holds_alternative<CallFailure>(content_); }
    const CallFailure& failure() const { return std::get<CallFailure>(content_); }
    T take() && { return std::get<T>(std::move(content_)); }

private:
    std::variant<T, CallFailure> content_;
};

template <>
class [[nodiscard]] CallResult<void> : public CallResult<std::monostate> {
public:
    using CallResult<std::monostate>::CallResult;
    void take() && {}
};

/// Keeps the text of a failure for this thread and returns its status.
kestrine_status remembered(const CallFailure& failure) noexcept;

/// The text that was remembered last in this thread; "" if there is none.
const char* lastErrorText() noexcept;

/// Runs the work of a function. Nothing that it throws gets out.
template <class Work>
kestrine_status answered(const Work& work) noexcept {
    try {
        const CallResult<void> result = work();
        return result ? KESTRINE_OK : remembered(result.failure());
    } catch (const std::bad_alloc&) {
        return remembered({KESTRINE_OUT_OF_MEMORY, "not enough memory"});
    } catch (...) {
        return remembered({KESTRINE_INTERNAL, "a defect of the library"});
    }
}

} // namespace kestrine

// CallFailure: why a function of the C interface failed, and how callers learn of it. The work of a function
// throws it.
#pragma once

#include "libkestrine/kestrine.h"
#include "platform/host/Result.h"

#include <new>
#include <string>
#include <string_view>

namespace kestrine {

struct CallFailure {
    kestrine_status status;
    std::string text; ///< a sentence without full stop
};

CallFailure callFailure(const Failure& failure);

/// The value. Throws CallFailure for a failure.
template <class T>
T valueOf(Result<T> result) {
    if (!result)
        throw callFailure(result.failure());
    return std::move(result).take();
}

/// Throws CallFailure if the argument of that name is null.
void requireArgument(const void* argument, const char* name);

/// Keeps the text of a failure for this thread and returns `status`.
kestrine_status remembered(kestrine_status status, std::string_view text) noexcept;

/// The text that was remembered last in this thread; "" if there is none.
const char* lastErrorText() noexcept;

/// Runs the work of a function. Nothing that it throws gets out.
template <class Work>
kestrine_status answered(const Work& work) noexcept {
    try {
        work();
        return KESTRINE_OK;
    } catch (const CallFailure& failure) {
        return remembered(failure.status, failure.text);
    } catch (const std::bad_alloc&) {
        return remembered(KESTRINE_OUT_OF_MEMORY, "not enough memory");
    } catch (...) {
        return remembered(KESTRINE_INTERNAL, "a defect of the library");
    }
}

} // namespace kestrine

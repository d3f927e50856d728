// Whether this program was built with a sanitizer that needs memory and messages of its own.
#pragma once

namespace kestrine {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool builtWithSanitizers = true;
#elif defined(__has_feature)
constexpr bool builtWithSanitizers =
    __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer);
#else
constexpr bool builtWithSanitizers = false;
#endif

} // namespace kestrine

// ICU, loaded on demand: when one of the functions below is called for the first time. The library stays
// loaded. Without ICU all function pointers are null.
#pragma once

#include <cstdint>

namespace kestrine {

// These are functions of ICU's C interface. The error code must be 0 before a call; above 0 it is a failure.
// Lengths and capacities count UTF-16 code units.

struct UnicodeCaseFunctions {
    using MapText = std::int32_t(char16_t* into, std::int32_t capacity, const char16_t* text,
                                 std::int32_t length, const char* locale, int* errorCode);

    MapText* toUpper = nullptr;
    MapText* toLower = nullptr;
    std::int32_t (*fold)(std::int32_t codePoint, std::uint32_t options) = nullptr;
};

struct UnicodeConverter;

struct UnicodeConverterFunctions {
    using Callback = void(const void* context, void* arguments, const char* bytes, std::int32_t length,
                          int reason, int* errorCode);

    UnicodeConverter* (*open)(const char* name, int* errorCode) = nullptr;
    void (*close)(UnicodeConverter*) = nullptr;
    void (*setToUnicodeCallback)(UnicodeConverter*, Callback* callback, const void* context,
                                 Callback** oldCallback, const void** oldContext, int* errorCode) = nullptr;
    std::int32_t (*toUnicode)(UnicodeConverter*, char16_t* into, std::int32_t capacity, const char* bytes,
                              std::int32_t byteCount, int* errorCode) = nullptr;
    Callback* stopAtMalformed = nullptr;
};

struct UnicodeNormalizer;

struct UnicodeNormalizerFunctions {
    /// ICU's shared normalizers, for canonical (NFD) and compatibility decomposition (NFKD).
    const UnicodeNormalizer* (*canonical)(int* errorCode) = nullptr;
    const UnicodeNormalizer* (*compatible)(int* errorCode) = nullptr;
    std::int32_t (*decompose)(const UnicodeNormalizer*, const char16_t* text, std::int32_t length,
                              char16_t* into, std::int32_t capacity, int* errorCode) = nullptr;
};

struct UnicodeCollator;

struct UnicodeCollationFunctions {
    UnicodeCollator* (*open)(const char* locale, int* errorCode) = nullptr;
    void (*setAttribute)(UnicodeCollator*, int attribute, int value, int* errorCode) = nullptr;
    int (*compare)(const UnicodeCollator*, const char16_t* text, std::int32_t length, const char16_t* other,
                   std::int32_t otherLength) = nullptr;
};

const UnicodeCaseFunctions& unicodeCaseFunctions();
const UnicodeConverterFunctions& unicodeConverterFunctions();
const UnicodeNormalizerFunctions& unicodeNormalizerFunctions();
const UnicodeCollationFunctions& unicodeCollationFunctions();

} // namespace kestrine

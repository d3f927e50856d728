// AppleScriptError: why a script was not run or failed, as a plain value and as the platform's dictionary.
#pragma once

#include "platform/foundation/NSCollections.h"

#include <cstdint>
#include <memory>

namespace kestrine {

// The keys of the dictionary.
inline constexpr const char16_t* NSAppleScriptErrorNumber = u"NSAppleScriptErrorNumber";   ///< NSNumber
inline constexpr const char16_t* NSAppleScriptErrorMessage = u"NSAppleScriptErrorMessage"; ///< string
inline constexpr const char16_t* NSAppleScriptErrorBriefMessage =
    u"NSAppleScriptErrorBriefMessage";                                                     ///< string
inline constexpr const char16_t* NSAppleScriptErrorAppName = u"NSAppleScriptErrorAppName"; ///< string
inline constexpr const char16_t* NSAppleScriptErrorRange = u"NSAppleScriptErrorRange";     ///< NSValue

// The platform's numbers for errors that are found before the Finder is called.
inline constexpr std::int32_t scriptSyntaxError = -2741;
inline constexpr std::int32_t scriptTooLarge = -2707; ///< "internal table overflow"
inline constexpr std::int32_t cannotGetObject = -1728;

struct AppleScriptError {
    std::int32_t number;
    NSString message;       ///< a sentence for people, with a full stop
    NSRange range;          ///< the part of the script that it concerns
    bool isFinders = false; ///< reported by the Finder, not by the parser
};

/// The dictionary of an error; null (nil) means success.
using ScriptErrorInformation = std::shared_ptr<const NSDictionary>;

/// Has all keys, but the application's name only for an error that the Finder reported. The brief message
/// does not name the application.
ScriptErrorInformation errorInformation(const AppleScriptError& error);

} // namespace kestrine

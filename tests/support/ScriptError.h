// The values in the error dictionary of a script.
#pragma once

#include "platform/appkit/AppleScriptError.h"
#include "platform/foundation/NSNumber.h"
#include "platform/foundation/NSValue.h"

namespace kestrine::testing {

/// The error number; 0 if the dictionary is nil or has no number.
inline std::int32_t errorNumberIn(const ScriptErrorInformation& information) {
    const Object value = information ? information->objectForKey(NSAppleScriptErrorNumber) : nullptr;
    const auto number = std::dynamic_pointer_cast<const NSNumber>(value);
    return number ? number->intValue() : 0;
}

/// The string for a key; nil if there is none.
inline OptionalString errorTextIn(const ScriptErrorInformation& information, const char16_t* key) {
    return NSString::fromObject(information ? information->objectForKey(key) : nullptr);
}

/// The part of `source` in which the error is; "?" if the dictionary has no range.
inline NSString errorPlaceIn(const ScriptErrorInformation& information, const NSString& source) {
    const Object value = information ? information->objectForKey(NSAppleScriptErrorRange) : nullptr;
    const auto range = std::dynamic_pointer_cast<const NSValue>(value);
    return range && range->rangeValue().end() <= source.length() ? source.substring(range->rangeValue())
                                                                 : NSString(u"?");
}

} // namespace kestrine::testing

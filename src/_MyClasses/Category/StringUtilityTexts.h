// The localized strings that StringUtility uses.
#pragma once

#include "platform/foundation/NSBundle.h"

namespace kestrine::StringUtility {

/// The string for `key` in the table "StringUtility"; the key itself when there is none.
inline NSString localizedText(NSBundle& bundle, const NSString& key) {
    return bundle.localizedString(key, u"", u"StringUtility");
}

} // namespace kestrine::StringUtility

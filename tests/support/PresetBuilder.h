// Presets for tests.
#pragma once

#include "models/ResizeSet.h"
#include "platform/foundation/NSNumber.h"

#include <initializer_list>
#include <utility>

namespace kestrine::testing {

/// A preset with the default values except for the given fields: makeSet(u"Web", {{u"maxSize", 300.0F}}).
inline std::shared_ptr<ResizeSet>
makeSet(const NSString& name, std::initializer_list<std::pair<NSString, NSNumber::Value>> fields = {}) {
    const auto set = std::make_shared<ResizeSet>();
    set->setValueForKey(name.object(), u"name");
    for (const auto& [key, value] : fields)
        set->setValueForKey(std::make_shared<NSNumber>(value), key);
    return set;
}

} // namespace kestrine::testing

// ArchivedClass: one row of the table that tells the archiver how objects of a class are written and read.
// Tables are handed over by whoever archives; nothing registers itself.
#pragma once

#include "platform/foundation/NSObject.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <typeinfo>

namespace kestrine {

class NSArchiver;
class NSUnarchiver;

struct ArchivedClass {
    std::string_view name;
    /// What is written beside the name; reading asks for the version that was stored.
    std::int32_t version;
    /// Name of another row; empty for the root class.
    std::string_view superclass;
    /// Whether `object`, which is not nil, is written under this class; null when none ever is.
    bool (*isInstance)(const Object& object);
    void (*encode)(const Object& object, NSArchiver& coder);
    /// Gives nil only after it has let `coder` fail; null when no object can be made of this class.
    Object (*decode)(NSUnarchiver& coder);
};

using ArchivedClasses = std::span<const ArchivedClass>;

/// The row of a class with the two operations of the platform's coding protocol:
///   void encodeWithCoder(NSArchiver& coder) const                          (`encodeWithCoder:`)
///   static std::shared_ptr<const T> initWithCoder(NSUnarchiver& coder)     (`initWithCoder:`)
template <class T>
constexpr ArchivedClass archivedClass(std::string_view name, std::int32_t version,
                                      std::string_view superclass = "NSObject") {
    return {name,
            version,
            superclass,
            [](const Object& object) {
                const NSObject& instance = *object;
                return typeid(instance) == typeid(T);
            },
            [](const Object& object, NSArchiver& coder) {
                static_cast<const T&>(*object).encodeWithCoder(coder);
            },
            [](NSUnarchiver& coder) -> Object { return T::initWithCoder(coder); }};
}

/// The row named `name`, looked for in `classes` first and then among the platform's; null when there is
/// none.
const ArchivedClass* findArchivedClass(ArchivedClasses classes, std::string_view name);

/// Likewise the row under which `object` is written.
const ArchivedClass* findArchivedClass(ArchivedClasses classes, const Object& object);

} // namespace kestrine

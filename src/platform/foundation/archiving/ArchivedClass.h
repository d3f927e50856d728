// ArchivedClass: a table row that describes how objects of a class are archived.
// Callers pass tables to the archiver. There is no global registration.
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
    /// The version to write. A class can read older versions, see NSUnarchiver::versionForClassName().
    std::int32_t version;
    /// The name of another row; empty for the root class.
    std::string_view superclass;
    /// Whether `object`, which is not nil, is written as this class. Null for a class that is only read.
    bool (*isInstance)(const Object& object);
    void (*encode)(const Object& object, NSArchiver& coder);
    /// Returns nil only after a failure of `coder`. Null for a class without instances.
    Object (*decode)(NSUnarchiver& coder);
};

using ArchivedClasses = std::span<const ArchivedClass>;

/// The row for a class with the two operations of the coding protocol:
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

/// The row called `name` in `classes`, otherwise in the platform's table; null if there is none.
const ArchivedClass* findArchivedClass(ArchivedClasses classes, std::string_view name);

/// The row as which `object` is written, from the same tables; null if there is none.
const ArchivedClass* findArchivedClass(ArchivedClasses classes, const Object& object);

} // namespace kestrine

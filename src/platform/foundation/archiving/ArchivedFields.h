// ArchivedField: an archived member of a class. Writing and reading use one table of them, in archive order.
#pragma once

#include "platform/foundation/archiving/NSArchiver.h"
#include "platform/foundation/archiving/NSUnarchiver.h"

#include <variant>

namespace kestrine {

/// Stands for a class version: no version stores the member.
inline constexpr std::uint32_t neverArchived = 0xffffffff;

/// The type of the member determines the type code: "@" for an optional string, "c", "i" and "f" for numbers.
template <class T>
struct ArchivedField {
    /// The key for key-value coding. The archive does not store it.
    std::string_view key;
    std::variant<OptionalString T::*, std::int8_t T::*, std::int32_t T::*, float T::*> member;
    /// The first version of the class that stores it, or neverArchived.
    std::uint32_t since = 0;

    constexpr bool isArchived() const { return since != neverArchived; }
};

/// The version that stores the members of all rows, to be written into archives.
template <class T>
constexpr std::int32_t currentVersion(std::span<const ArchivedField<T>> fields) {
    std::uint32_t version = 0;
    for (const ArchivedField<T>& field : fields)
        if (field.isArchived() && field.since > version)
            version = field.since;
    return static_cast<std::int32_t>(version);
}

/// Writes the archived members, each as a separate group.
template <class T>
void encodeFields(NSArchiver& coder, const T& object, std::span<const ArchivedField<T>> fields) {
    for (const ArchivedField<T>& field : fields) {
        if (!field.isArchived()) {
            continue;
        }
        if (const auto* text = std::get_if<OptionalString T::*>(&field.member)) {
            coder.encodeString(object.**text);
        } else if (const auto* flag = std::get_if<std::int8_t T::*>(&field.member)) {
            coder.encodeValue(object.**flag);
        } else if (const auto* integer = std::get_if<std::int32_t T::*>(&field.member)) {
            coder.encodeValue(object.**integer);
        } else {
            coder.encodeValue(object.*std::get<float T::*>(field.member));
        }
    }
}

/// Reads the members that `version` (versionForClassName()) of the class stores; the others keep their
/// values.
template <class T>
void decodeFields(NSUnarchiver& coder, T& object, std::span<const ArchivedField<T>> fields,
                  std::size_t version) {
    for (const ArchivedField<T>& field : fields) {
        if (!field.isArchived() || version < field.since) {
            continue;
        }
        if (const auto* text = std::get_if<OptionalString T::*>(&field.member)) {
            object.** text = coder.decodeString();
        } else if (const auto* flag = std::get_if<std::int8_t T::*>(&field.member)) {
            object.** flag = coder.decodeValue<std::int8_t>();
        } else if (const auto* integer = std::get_if<std::int32_t T::*>(&field.member)) {
            object.** integer = coder.decodeValue<std::int32_t>();
        } else {
            object.*std::get<float T::*>(field.member) = coder.decodeValue<float>();
        }
    }
}

} // namespace kestrine

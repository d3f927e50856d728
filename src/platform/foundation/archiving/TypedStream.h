// TypedStream: the parsed content of an archive, independent of the meaning of its classes.
// The values of an object are one flat list: groups, structures and arrays are replaced by their members.
#pragma once

#include "platform/host/Bytes.h"

#include <optional>
#include <string_view>
#include <variant>

namespace kestrine {

/// A position in TypedStream::objects or TypedStream::classes.
struct ObjectIndex {
    std::size_t position;
};
struct ClassIndex {
    std::size_t position;
};

struct TypedValue {
    /// The stored type code; '[' for an array of single bytes, which is one value.
    char code;
    /// Depends on the code: an integer for c C B s S i I l L q Q (for Q, the same bits); a double for f and
    /// d; a string for * : and %; bytes for + and [; an object for @; a class for #. Nothing for nil of any
    /// code.
    std::variant<std::monostate, std::int64_t, double, std::string_view, ByteView, ObjectIndex, ClassIndex>
        content;
};

struct TypedClass {
    std::string_view name;
    std::int64_t version = 0;
    std::optional<ClassIndex> superclass;
};

struct TypedObject {
    ClassIndex itsClass{0};
    std::vector<TypedValue> values;
};

/// Strings and bytes refer to the bytes of the archive, which must outlive this object.
struct TypedStream {
    std::vector<TypedClass> classes;
    /// All objects in the order of their starts in the archive.
    std::vector<TypedObject> objects;
    /// All objects in the order of their ends in the archive: each object after the objects in it, unless
    /// they contain each other.
    std::vector<ObjectIndex> finished;
    /// Empty if the root is nil.
    std::optional<ObjectIndex> root;
};

} // namespace kestrine

// TypedStream: one archive taken apart, before anything is known about what its classes mean.
// Values are flat: structures and arrays are replaced by their members, and an object's groups by one list.
#pragma once

#include "platform/host/Bytes.h"

#include <optional>
#include <string_view>
#include <variant>

namespace kestrine {

/// Positions in TypedStream::objects and TypedStream::classes.
struct ObjectIndex {
    std::size_t position;
};
struct ClassIndex {
    std::size_t position;
};

struct TypedValue {
    /// The type code under which it was stored; '[' for an array of single bytes, which is one value.
    char code;
    /// By code: nothing for a nil of any kind; an integer for c C B s S i I l L q Q (Q: its bits); a double
    /// for f and d; text for * : and %; bytes for + and [; an object for @; a class for #.
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

/// Texts and bytes are looked at, not owned: they live in the bytes that were read.
struct TypedStream {
    std::vector<TypedClass> classes;
    /// In the order in which they begin.
    std::vector<TypedObject> objects;
    /// All objects in the order in which they end: one comes after those it holds, unless they hold it, too.
    std::vector<ObjectIndex> finished;
    /// Nothing when the root is nil.
    std::optional<ObjectIndex> root;
};

} // namespace kestrine

// TypedStreamWriter: writes the container byte for byte as the platform does, in little-endian order.
// It numbers what is shared and knows no class; whoever calls it keeps groups and objects well formed.
#pragma once

#include "platform/foundation/archiving/TypeEncoding.h"
#include "platform/host/Bytes.h"

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace kestrine {

/// A class as archived: its name and the version it has now.
struct ClassVersion {
    std::string_view name;
    std::int32_t version;
};

class TypedStreamWriter {
public:
    TypedStreamWriter();

    /// Begins a group; the values that `type` lists must follow.
    void writeType(std::string_view type) { writeSharedString(type); }

    /// The value of a number, in the form that its own type code asks for.
    template <class T>
    void writeNumber(T value) {
        static_assert(typeCode<T> != '\0', "not an archived type");
        if constexpr (std::is_floating_point_v<T>) {
            writeFloat(value);
        } else if constexpr (sizeof(T) == 1) {
            bytes_.push_back(static_cast<std::uint8_t>(value));
        } else if constexpr (sizeof(T) == 2) {
            writeInteger(value);
        } else {
            writeInteger(static_cast<std::make_signed_t<T>>(value));
        }
    }

    /// Bytes as they are, for an array of single bytes.
    void writeBytes(ByteView bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
    /// Bytes behind their number, for the code '+'.
    void writeCountedBytes(ByteView bytes);
    void writeCString(std::string_view text);
    /// Nil in the place of an object.
    void writeNil();

    /// A new object of the first class in `chain`, which goes on with the superclasses up to the root.
    /// Returns the object's number. Its groups must follow, then endObject().
    std::size_t beginObject(std::span<const ClassVersion> chain);
    void endObject();
    /// The object that beginObject() gave this number.
    void writeReference(std::size_t number);

    /// All that was written; the writer is of no use afterwards.
    Bytes takeBytes() { return std::move(bytes_); }

private:
    void writeInteger(std::int64_t value);
    void writeFloat(float value);
    void writeFloat(double value);
    void writeRaw(std::uint64_t bits, std::size_t width);
    void writeText(std::string_view text);
    void writeSharedString(std::string_view text);
    void writeClass(std::span<const ClassVersion> chain);

    Bytes bytes_;
    std::map<std::string, std::size_t, std::less<>> strings_;
    /// Objects, classes and C strings share one numbering.
    std::size_t nextShared_ = 0;
    std::map<std::string, std::size_t, std::less<>> classes_;
    std::map<std::string, std::size_t, std::less<>> cStrings_;
};

} // namespace kestrine

// TypedStreamWriter: writes the container format byte for byte as the platform does, in little-endian order.
// It is independent of the archived classes. The caller is responsible for complete groups and objects.
#pragma once

#include "platform/foundation/archiving/TypeEncoding.h"
#include "platform/host/Bytes.h"

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace kestrine {

/// The name and version of a class in the archive.
struct ClassVersion {
    std::string_view name;
    std::int32_t version;
};

class TypedStreamWriter {
public:
    TypedStreamWriter();

    /// Starts a group. The values that `type` lists must follow.
    void writeType(std::string_view type) { writeSharedString(type); }

    /// A number, in the form for the type code of T.
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

    /// Bytes without a count, for an array of single bytes.
    void writeBytes(ByteView bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
    /// The number of bytes and the bytes, for the code '+'.
    void writeCountedBytes(ByteView bytes);
    void writeCString(std::string_view text);
    /// Nil instead of an object.
    void writeNil();

    /// Starts a new object of the first class in `chain`. The superclasses up to the root follow in `chain`.
    /// Returns the object's number. The groups of the object must follow, then endObject().
    std::size_t beginObject(std::span<const ClassVersion> chain);
    void endObject();
    /// A reference to the object with this number from beginObject().
    void writeReference(std::size_t number);

    /// All written bytes. The writer must not be used afterwards.
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

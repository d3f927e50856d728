#include "_MyClasses/Class/ExifTag/TagMessage.h"

#include "platform/host/process/MessageBytes.h"

namespace kestrine {

namespace {

// Limits of ExifTagReader: five directories, and 300 values of 8 bytes. A string has at most two bytes for
// each of its values here.
constexpr std::uint64_t maxDirectories = 5, maxEntries = 299, maxNumbers = 600;
constexpr std::uint64_t maxNameBytes = 32, maxValueBytes = 2400;

void write(MessageWriter& writer, const ByteBlock& bytes) { writer.add(ByteView(bytes)); }

void write(MessageWriter& writer, const NSString& text) {
    const std::u16string_view units = text.utf16();
    writer.add(
        ByteView(reinterpret_cast<const std::uint8_t*>(units.data()), units.size() * sizeof(char16_t)));
}

void write(MessageWriter& writer, const NumberList& list) {
    writer.add(std::uint64_t{list.size()});
    for (const NSNumber& number : list) {
        writer.add(static_cast<std::uint8_t>(number.value().index()));
        std::visit([&](auto value) { writer.add(value); }, number.value());
    }
}

ByteBlock bytesIn(MessageReader& reader) {
    const ByteView bytes = reader.bytes(maxValueBytes);
    return {bytes.begin(), bytes.end()};
}

NSString textIn(MessageReader& reader) {
    const ByteView bytes = reader.bytes(maxValueBytes);
    std::u16string units(bytes.size() / sizeof(char16_t), u'\0');
    reader.refuseUnless(bytes.size() % sizeof(char16_t) == 0);
    if (!units.empty())
        std::memcpy(units.data(), bytes.data(), units.size() * sizeof(char16_t));
    return units;
}

template <class Number>
NSNumber::Value numberIn(MessageReader& reader) {
    if constexpr (std::is_same_v<Number, bool>)
        return reader.flag();
    else
        return reader.number<Number>();
}

/// The alternative of NSNumber::Value with this index.
template <std::size_t Index = 0>
NSNumber::Value numberWithIndex(MessageReader& reader, std::size_t index) {
    if constexpr (Index == std::variant_size_v<NSNumber::Value>) {
        reader.refuseUnless(false);
        return false;
    } else if (index == Index) {
        return numberIn<std::variant_alternative_t<Index, NSNumber::Value>>(reader);
    } else {
        return numberWithIndex<Index + 1>(reader, index);
    }
}

NumberList numbersIn(MessageReader& reader) {
    const std::uint64_t count = reader.count(2);
    reader.refuseUnless(count <= maxNumbers);
    NumberList list;
    for (std::uint64_t i = 0; i < count && reader.ok(); ++i)
        list.emplace_back(numberWithIndex(reader, reader.number<std::uint8_t>()));
    return list;
}

/// Reads a value. The cases have the order of the alternatives of TagValue.
TagValue valueIn(MessageReader& reader) {
    switch (reader.number<std::uint8_t>()) {
    case 0:
        return bytesIn(reader);
    case 1:
        return textIn(reader);
    case 2:
        return numbersIn(reader);
    default:
        reader.refuseUnless(false);
        return ByteBlock();
    }
}

/// A map with at most `maxCount` keys, whose values `valueFrom` reads.
template <class Map, class ValueFrom>
Map mapIn(MessageReader& reader, std::uint64_t maxCount, const ValueFrom& valueFrom) {
    Map map;
    const std::uint64_t count = reader.count(1);
    reader.refuseUnless(count <= maxCount);
    for (std::uint64_t i = 0; i < count && reader.ok(); ++i) {
        std::string key = reader.text(maxNameBytes);
        map.insert_or_assign(std::move(key), valueFrom(reader));
    }
    return map;
}

IFDDictionaryPointer directoryIn(MessageReader& reader) {
    return std::make_shared<const IFDDictionary>(mapIn<IFDDictionary>(reader, maxEntries, valueIn));
}

} // namespace

Bytes bytesOf(const ReadTags& read) {
    MessageWriter writer;
    writer.add(read.app1Offset);
    writer.add(read.tags != nullptr);
    if (read.tags == nullptr)
        return std::move(writer).take();
    writer.add(std::uint64_t{read.tags->size()});
    for (const auto& [name, directory] : *read.tags) {
        writer.add(name);
        writer.add(std::uint64_t{directory->size()});
        for (const auto& [key, value] : *directory) {
            writer.add(key);
            writer.add(static_cast<std::uint8_t>(value.index()));
            std::visit([&](const auto& content) { write(writer, content); }, value);
        }
    }
    return std::move(writer).take();
}

std::optional<ReadTags> readTagsIn(ByteView bytes) {
    MessageReader reader(bytes);
    ReadTags read;
    read.app1Offset = reader.number<std::uint16_t>();
    if (reader.flag())
        read.tags =
            std::make_shared<const TagDictionary>(mapIn<TagDictionary>(reader, maxDirectories, directoryIn));
    return reader.isComplete() ? std::optional(std::move(read)) : std::nullopt;
}

} // namespace kestrine

// The byte form of what ExifTagReader reads from a file, in which it passes from the process that does so.
#pragma once

#include "_MyClasses/Class/ExifTag/TagDictionary.h"

#include <optional>

namespace kestrine {

struct ReadTags {
    std::uint16_t app1Offset = 0; ///< see ExifTagReader::app1Offset()
    TagDictionaryPointer tags;    ///< null for nil
};

Bytes bytesOf(const ReadTags& read);

/// nullopt if `bytes`, which may come from a hostile process, are not within the limits of ExifTagReader.
std::optional<ReadTags> readTagsIn(ByteView bytes);

} // namespace kestrine

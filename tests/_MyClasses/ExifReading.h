// Readers for files that a test makes, and stored values as strings for comparison.
#pragma once

#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "tests/support/ExifBuilder.h"
#include "tests/support/TemporaryFolder.h"

namespace kestrine::testing {

/// A reader for photo.jpg in a temporary folder.
class ReadFile {
public:
    explicit ReadFile(ByteView file) { write(file); }
    explicit ReadFile(const ExifContent& content) : ReadFile(jpegFile(content)) {}

    void write(ByteView file) const { folder_.write("photo.jpg", file); }
    std::string path() const { return folder_ / "photo.jpg"; }
    void remove() const { std::filesystem::remove(path()); }

    ExifTagReader* operator->() const { return reader_.get(); }
    ExifTagReader& operator*() const { return *reader_; }

private:
    TemporaryFolder folder_;
    std::unique_ptr<ExifTagReader> reader_ = ExifTagReader::initWithPath(NSString::fromUTF8(path()));
};

/// "nil", "bytes 01 ff", "text abc", or the numbers with the width of each: "u16 6, i16 -1, f32 0.5".
std::string shown(const TagValue* value);
std::string shown(const std::optional<NSNumber>& number);
/// The value of `tag` in the named directory.
std::string shown(const TagDictionaryPointer& tags, std::string_view directory, std::uint16_t tag);

/// The names of the existing directories, separated by blanks.
std::string namesIn(const TagDictionaryPointer& tags);

} // namespace kestrine::testing

// NewContent: the content of a file that is to be published.
#pragma once

#include "platform/host/files/ContentDigest.h"
#include "platform/host/files/NamelessFile.h"

#include <concepts>
#include <variant>

namespace kestrine {

/// Bytes in memory, or a nameless file that has them already. Move-only.
class NewContent {
public:
    /// `bytes` must outlive this object.
    template <std::convertible_to<ByteView> Sequence>
    NewContent(const Sequence& bytes) : content_(ByteView(bytes)), size_(ByteView(bytes).size()) {}

    /// All that `file` has, which must be open for reading and writing.
    static Result<NewContent> of(NamelessFile file);

    std::uint64_t size() const { return size_; }
    Result<ContentDigest> digest() const;

    /// Writes everything at the current position of the open file `to`.
    Result<void> writeTo(int to) const;

    /// Null for bytes in memory.
    const NamelessFile* file() const { return std::get_if<NamelessFile>(&content_); }

private:
    NewContent(NamelessFile file, std::uint64_t size) : content_(std::move(file)), size_(size) {}

    std::variant<ByteView, NamelessFile> content_;
    std::uint64_t size_;
};

} // namespace kestrine

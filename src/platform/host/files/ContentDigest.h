// ContentDigest: a number that tells contents apart. It finds accidental changes, not attacks.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/Result.h"

#include <compare>
#include <cstdint>
#include <string>

namespace kestrine {

struct ContentDigest {
    std::uint64_t bytes = 0;  ///< the length of the content
    std::uint64_t number = 0; ///< FNV-1a, 64 bits

    auto operator<=>(const ContentDigest&) const = default;
};

/// The digest of content that arrives in pieces.
class RunningDigest {
public:
    void add(ByteView more);
    /// The digest of everything added so far.
    const ContentDigest& digest() const { return digest_; }

private:
    ContentDigest digest_{0, 0xcbf29ce484222325}; // the offset basis of FNV-1a
};

ContentDigest digestOf(ByteView content);
ContentDigest digestOf(const std::string& content);

/// The digest of a regular file's content.
Result<ContentDigest> digestOfFile(const std::string& path);
/// The same for a file that is open for reading; its position does not change.
Result<ContentDigest> digestOfOpenFile(int file);

} // namespace kestrine

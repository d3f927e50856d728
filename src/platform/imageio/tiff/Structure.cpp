#include "platform/imageio/tiff/Structure.h"

#include <algorithm>
#include <array>
#include <set>

namespace kestrine::tiff {

namespace {

constexpr std::size_t maximumPages = 1000;
/// The most that a classic file can state.
constexpr std::uint64_t maximumEntries = 65535;

constexpr std::uint8_t classicVersion = 42, bigVersion = 43;

/// Size in bytes of one value, by type; 0 for unknown types.
constexpr std::array<std::uint8_t, 19> valueBytes = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};

std::size_t valueBytesOf(std::uint16_t type) { return type < valueBytes.size() ? valueBytes[type] : 0; }

/// Types of unsigned integers.
constexpr std::array<std::uint16_t, 6> wholeNumberTypes = {1, 3, 4, 13, 16, 18};

/// Types of numbers that may point to a directory.
enum PointerType : std::uint16_t {
    longPointer = 4,
    directoryPointer = 13,
    bigLongPointer = 16,
    bigDirectoryPointer = 18
};

} // namespace

bool Structure::recognises(ByteView head) {
    if (head.size() < 4 || head[0] != head[1] || (head[0] != 'I' && head[0] != 'M'))
        return false;
    const std::uint8_t low = head[0] == 'I' ? head[2] : head[3], high = head[0] == 'I' ? head[3] : head[2];
    return high == 0 && (low == classicVersion || low == bigVersion);
}

Structure::Structure(std::shared_ptr<const ByteReader> reader) : reader_(std::move(reader)) {
    std::array<std::uint8_t, 4> head{};
    reader_->readAt(0, head);
    isBigEndian_ = head[0] == 'M';
    isBig_ = head[isBigEndian_ ? 3 : 2] == bigVersion;
}

Structure::Chain Structure::chain() const {
    const std::uint64_t firstPointerAt = isBig_ ? 8 : 4;
    std::vector<std::uint64_t> pages;
    std::set<std::uint64_t> seen;
    std::optional<std::uint64_t> page = number(firstPointerAt, offsetBytes());
    while (page && *page != 0 && pages.size() < maximumPages && seen.insert(*page).second) {
        pages.push_back(*page);
        page = next(*page);
    }
    while (!page && !pages.empty() && directoryAt(pages.back()).empty())
        pages.pop_back();
    return {std::move(pages), !page};
}

Result<std::vector<std::uint64_t>> Structure::pages() const {
    Chain chain = this->chain();
    if (chain.isBroken)
        return Failure{Reason::truncated, "the TIFF file ends before its directories"};
    if (chain.pages.empty())
        return Failure{Reason::malformed, "the TIFF file has no picture"};
    return std::move(chain.pages);
}

Structure::Directory Structure::directoryAt(std::uint64_t offset) const {
    const std::size_t count = entryCount(offset).value_or(0);
    Bytes bytes(count * entryBytes());
    const std::uint64_t entriesAt = offset + countBytes();
    if (reader_->readAt(entriesAt, bytes) != bytes.size())
        return {};
    Directory entries;
    for (std::size_t i = 0; i < count; ++i) {
        const ByteView entry = ByteView(bytes).subspan(i * entryBytes(), entryBytes());
        const auto type = static_cast<std::uint16_t>(numberIn(entry.subspan(2, 2)));
        const std::uint64_t values = numberIn(entry.subspan(4, offsetBytes()));
        const std::size_t size = valueBytesOf(type);
        const bool isInside = size > 0 && values <= offsetBytes() / size;
        const std::uint64_t inside = entriesAt + i * entryBytes() + 4 + offsetBytes();
        entries.push_back({static_cast<std::uint16_t>(numberIn(entry.first(2))), type, values,
                           isInside ? inside : numberIn(entry.last(offsetBytes()))});
    }
    return entries;
}

Structure::Directory Structure::child(const Directory& parent, std::uint16_t tag) const {
    const auto entry = std::ranges::find(parent, tag, &Entry::tag);
    if (entry == parent.end() || entry->count != 1)
        return {};
    std::optional<std::uint64_t> offset;
    if (entry->type == longPointer || entry->type == directoryPointer)
        offset = number(entry->valuesAt, 4);
    else if (entry->type == bigLongPointer || entry->type == bigDirectoryPointer)
        offset = number(entry->valuesAt, 8);
    return offset ? directoryAt(*offset) : Directory{};
}

std::vector<std::uint64_t> Structure::numbers(const Directory& directory, std::uint16_t tag,
                                              std::size_t limit) const {
    const auto entry = std::ranges::find(directory, tag, &Entry::tag);
    if (entry == directory.end() || entry->count > limit
        || std::ranges::count(wholeNumberTypes, entry->type) == 0)
        return {};
    const std::size_t size = valueBytesOf(entry->type);
    const Bytes bytes = values(*entry, limit * size);
    std::vector<std::uint64_t> numbers;
    for (std::size_t at = 0; at < bytes.size(); at += size)
        numbers.push_back(numberIn(ByteView(bytes).subspan(at, size)));
    return numbers;
}

Bytes Structure::values(const Entry& entry, std::size_t limit) const {
    const std::size_t size = valueBytesOf(entry.type);
    if (size == 0 || entry.count > limit / size || entry.valuesAt > reader_->size())
        return {};
    Bytes bytes(static_cast<std::size_t>(entry.count) * size);
    return reader_->readAt(entry.valuesAt, bytes) == bytes.size() ? bytes : Bytes{};
}

std::uint64_t Structure::numberIn(ByteView bytes) const {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        value = value << 8 | bytes[isBigEndian_ ? i : bytes.size() - 1 - i];
    return value;
}

std::optional<std::uint64_t> Structure::number(std::uint64_t offset, std::size_t bytes) const {
    std::array<std::uint8_t, 8> buffer;
    const auto number = std::span(buffer).first(bytes);
    if (offset > reader_->size() || reader_->readAt(offset, number) != bytes)
        return std::nullopt;
    return numberIn(number);
}

std::optional<std::size_t> Structure::entryCount(std::uint64_t offset) const {
    const std::optional<std::uint64_t> count = number(offset, countBytes());
    return count && *count <= maximumEntries ? count : std::nullopt;
}

std::optional<std::uint64_t> Structure::next(std::uint64_t directory) const {
    const std::optional<std::size_t> count = entryCount(directory);
    return count ? number(directory + countBytes() + *count * entryBytes(), offsetBytes()) : std::nullopt;
}

} // namespace kestrine::tiff

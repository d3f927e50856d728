#include "platform/foundation/FileCreationDate.h"

#include "platform/foundation/LocalTime.h"
#include "platform/host/files/ExtendedAttributes.h"

#include <algorithm>
#include <array>

namespace kestrine {

namespace {

/// The server's block: a text that ends in a zero byte, then, aligned to two bytes, the version twice in 16
/// bits, then, aligned to four, the record of that version. All numbers are little-endian.
struct DosRecord {
    std::uint16_t version;
    std::size_t creationTime; ///< from the start of the record
    bool startsWithFlags;     ///< which say what of the record is valid
};
constexpr std::array<DosRecord, 5> dosRecords{{
    {1, 24, false},
    {2, 28, false},
    {3, 28, true},
    {4, 16, true},
    {5, 8, true},
}};
constexpr std::uint8_t creationTimeIsValid = 0x10;

/// Times of these records count units of 100 ns from the year 1601.
constexpr std::chrono::seconds from1601To1970{11644473600};
constexpr std::int64_t unitsASecond = 10000000;

std::size_t aligned(std::size_t position, std::size_t to) { return (position + to - 1) / to * to; }

const DosRecord* recordOfVersion(std::uint16_t version) {
    const auto* record = std::ranges::find(dosRecords, version, &DosRecord::version);
    return record == dosRecords.end() ? nullptr : record;
}

/// Whether `block` is of a known version and has the new time now.
bool putCreationTime(Bytes& block, std::chrono::sys_seconds date) {
    const std::chrono::seconds since1601 = date.time_since_epoch() + from1601To1970;
    const auto textEnd = std::ranges::find(block, 0);
    const std::size_t version = aligned(static_cast<std::size_t>(textEnd - block.begin()) + 1, 2);
    const std::size_t start = aligned(version + 4, 4);
    if (since1601.count() < 0 || start > block.size())
        return false;
    const DosRecord* record =
        recordOfVersion(static_cast<std::uint16_t>(block[version] | block[version + 1] << 8));
    if (!record || block.size() < start + record->creationTime + 8)
        return false;
    if (record->startsWithFlags)
        block[start] |= creationTimeIsValid;
    const std::int64_t time = since1601.count() * unitsASecond;
    for (std::size_t i = 0; i < 8; ++i)
        block[start + record->creationTime + i] = static_cast<std::uint8_t>(time >> (8 * i));
    return true;
}

} // namespace

Result<void> setFileCreationDate(const std::string& path, std::chrono::sys_seconds date) {
    const std::string text = isoText(date);
    const Bytes content(text.begin(), text.end());
    TRY(setExtendedAttribute(path, creationDateAttribute, content));
    Result<Bytes> block = getExtendedAttribute(path, dosAttribute);
    if (!block || !putCreationTime(*block, date))
        return {};
    return setExtendedAttribute(path, dosAttribute, *block);
}

std::optional<std::string> fileCreationDateText(const std::string& path) {
    const Result<Bytes> content = getExtendedAttribute(path, creationDateAttribute);
    return content ? std::optional(std::string(content->begin(), content->end())) : std::nullopt;
}

} // namespace kestrine

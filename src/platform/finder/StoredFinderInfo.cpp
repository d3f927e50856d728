#include "platform/finder/AppleDouble.h"
#include "platform/finder/StoredForms.h"

#include <algorithm>
#include <array>

namespace kestrine {

namespace {

constexpr std::size_t size = 32; // of the Finder information

std::optional<FinderInfo> readPlain(ByteView stored) {
    if (stored.size() != size)
        return std::nullopt;
    return finderInfoFromBytes(stored.first<size>());
}

std::optional<Bytes> changedPlain(ByteView, const FinderInfo& information) {
    if (information == FinderInfo{})
        return Bytes();
    const auto bytes = bytesOf(information);
    return Bytes(bytes.begin(), bytes.end());
}

/// A copy of `whole` with the information at `offset`.
Bytes withInformationAt(ByteView whole, std::size_t offset, const FinderInfo& information) {
    Bytes changed(whole.begin(), whole.end());
    std::ranges::copy(bytesOf(information), changed.begin() + static_cast<std::ptrdiff_t>(offset));
    return changed;
}

/// The whole entry; other data, such as attributes of the file, can follow the information.
std::optional<ByteView> informationEntry(const Result<AppleDouble>& container) {
    const auto content = container ? container->content(AppleDoubleEntry::finderInfo) : std::nullopt;
    return content && content->size() >= size ? content : std::nullopt;
}

std::optional<FinderInfo> readInfoInAppleDouble(ByteView stored) {
    const auto content = informationEntry(AppleDouble::parse(stored));
    if (!content)
        return std::nullopt;
    return finderInfoFromBytes(content->first<size>());
}

std::optional<Bytes> appleDoubleWithInfo(ByteView stored, const FinderInfo& information) {
    const Result<AppleDouble> container = AppleDouble::parse(stored);
    const auto content = informationEntry(container);
    if (!content)
        return std::nullopt;
    return container->withContent(AppleDoubleEntry::finderInfo, withInformationAt(*content, 0, information));
}

// The stream: signature, version, 4 reserved bytes, time of the last backup, Finder information, information
// of another old system.
constexpr std::array<std::uint8_t, 4> streamSignature{'A', 'F', 'P', 0};
constexpr std::size_t streamSize = 60;
constexpr std::size_t informationPlace = 16;

bool isStream(ByteView stored) {
    const bool fits = stored.size() == streamSize || stored.size() == streamSize + 1;
    return fits && std::ranges::equal(stored.first<4>(), streamSignature);
}

std::optional<FinderInfo> readStream(ByteView stored) {
    if (!isStream(stored))
        return std::nullopt;
    return finderInfoFromBytes(stored.subspan<informationPlace, size>());
}

std::optional<Bytes> changedStream(ByteView stored, const FinderInfo& information) {
    if (!isStream(stored))
        return std::nullopt;
    return withInformationAt(stored, informationPlace, information);
}

} // namespace

const StoredForm<FinderInfo> plainFinderInfo{readPlain, changedPlain};
const StoredForm<FinderInfo> finderInfoInAppleDouble{readInfoInAppleDouble, appleDoubleWithInfo};
const StoredForm<FinderInfo> finderInfoInAFPInfo{readStream, changedStream};

} // namespace kestrine

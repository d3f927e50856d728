#include "platform/coregraphics/ColorManagement.h"

#include "platform/coregraphics/CurveTag.h"
#include "platform/coregraphics/ProfileBytes.h"

#include <algorithm>
#include <array>
#include <new>

namespace kestrine {

namespace {

/// Profiles of printers have a few megabytes; larger ones are refused.
constexpr std::size_t maximumProfileSize = std::size_t{16} << 20;
/// The minimum in bytes: the header and the number of tags.
constexpr std::size_t minimumProfileSize = 128 + 4;

constexpr std::array<std::uint32_t, 4> pictureClasses = {cmsSigInputClass, cmsSigDisplayClass,
                                                         cmsSigOutputClass, cmsSigColorSpaceClass};
constexpr std::array<std::uint32_t, 2> connectionSpaces = {cmsSigXYZData, cmsSigLabData};

/// The tags of tables from the picture's colours to the connection space. A relative colorimetric conversion
/// uses the first one that exists.
constexpr std::array tableTags = {cmsSigDToB1Tag, cmsSigAToB1Tag, cmsSigAToB0Tag};

constexpr std::array grayCurves = {cmsSigGrayTRCTag};
constexpr std::array colorCurves = {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
constexpr std::array primaryTags = {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag};

/// Reads the bytes directly because the library returns unknown values as values of an enumeration.
bool hasFittingHeader(ByteView profile, cmsColorSpaceSignature space) {
    constexpr std::size_t deviceClass = 12;
    constexpr std::size_t colorSpace = 16;
    constexpr std::size_t connectionSpace = 20;
    constexpr std::size_t signature = 36;
    return bigEndian32(profile, signature) == cmsMagicNumber && bigEndian32(profile, colorSpace) == space
           && std::ranges::count(pictureClasses, bigEndian32(profile, deviceClass)) > 0
           && std::ranges::count(connectionSpaces, bigEndian32(profile, connectionSpace)) > 0;
}

bool isReadableTable(const ProfileHandle& profile, cmsTagSignature tag, cmsColorSpaceSignature space) {
    const auto* table = static_cast<const cmsPipeline*>(colorLibrary().readTag(profile.get(), tag));
    return table && colorLibrary().inputChannels(table) == colorLibrary().channelsOf(space)
           && colorLibrary().outputChannels(table) == 3;
}

bool canConvert(const ProfileHandle& profile, cmsColorSpaceSignature space) {
    const auto isThere = [&](cmsTagSignature tag) { return colorLibrary().isTag(profile.get(), tag) != 0; };
    const auto isCurve = [&](cmsTagSignature tag) { return parseCurveTag(rawTag(profile, tag)).has_value(); };
    const auto isColor = [&](cmsTagSignature tag) {
        return colorLibrary().readTag(profile.get(), tag) != nullptr;
    };
    if (const auto* table = std::ranges::find_if(tableTags, isThere); table != tableTags.end())
        return isReadableTable(profile, *table, space);
    if (space == cmsSigGrayData)
        return std::ranges::all_of(grayCurves, isCurve);
    return space == cmsSigRgbData && std::ranges::all_of(colorCurves, isCurve)
           && std::ranges::all_of(primaryTags, isColor);
}

TransformHandle makeTransform(const ContextHandle& context, const ProfileHandle& source, cmsUInt32Number from,
                              cmsUInt32Number to, cmsUInt32Number flags, const ColorProfile& target) {
    const ProfileHandle space = openPictureProfile(context, target.bytes(), cmsSigRgbData);
    if (!space)
        return nullptr;
    return TransformHandle(colorLibrary().createTransform(
        context.get(), source.get(), from, space.get(), to, INTENT_RELATIVE_COLORIMETRIC,
        flags | cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_COPY_ALPHA));
}

} // namespace

ContextHandle makeContext() {
    ContextHandle context(colorLibrary().createContext(nullptr, nullptr));
    if (!context)
        throw std::bad_alloc();
    colorLibrary().setErrorHandler(context.get(), [](cmsContext, cmsUInt32Number, const char*) {});
    return context;
}

std::size_t profileSize(ByteView icc) {
    if (icc.size() < minimumProfileSize)
        return 0;
    const std::size_t size = bigEndian32(icc, 0);
    const bool plausible = size >= minimumProfileSize && size <= maximumProfileSize && size <= icc.size();
    return plausible ? size : 0;
}

ProfileHandle openPictureProfile(const ContextHandle& context, ByteView icc, cmsColorSpaceSignature space) {
    const std::size_t size = profileSize(icc);
    if (size == 0 || !hasFittingHeader(icc, space))
        return nullptr;
    ProfileHandle profile(
        colorLibrary().openProfile(context.get(), icc.data(), static_cast<cmsUInt32Number>(size)));
    return profile && canConvert(profile, space) ? std::move(profile) : nullptr;
}

Bytes rawTag(const ProfileHandle& profile, cmsTagSignature tag) {
    Bytes bytes(colorLibrary().readRawTag(profile.get(), tag, nullptr, 0));
    bytes.resize(colorLibrary().readRawTag(profile.get(), tag, bytes.data(),
                                           static_cast<cmsUInt32Number>(bytes.size())));
    return bytes;
}

bool convertsByTable(const ProfileHandle& profile) {
    return std::ranges::any_of(
        tableTags, [&](cmsTagSignature tag) { return colorLibrary().isTag(profile.get(), tag) != 0; });
}

std::unique_ptr<TransformIntoRGB> TransformIntoRGB::ofProfile(ByteView icc, cmsColorSpaceSignature space,
                                                              cmsUInt32Number from, cmsUInt32Number to,
                                                              cmsUInt32Number flags,
                                                              const ColorProfile& target) {
    ContextHandle context = makeContext();
    const ProfileHandle source = openPictureProfile(context, icc, space);
    if (!source)
        return nullptr;
    TransformHandle transform = makeTransform(context, source, from, to, flags, target);
    if (!transform)
        return nullptr;
    return std::unique_ptr<TransformIntoRGB>(new TransformIntoRGB(std::move(context), std::move(transform)));
}

std::unique_ptr<TransformIntoRGB> TransformIntoRGB::ofLab(cmsUInt32Number from, cmsUInt32Number to,
                                                          cmsUInt32Number flags) {
    ContextHandle context = makeContext();
    const ProfileHandle source(colorLibrary().createLabProfile(context.get(), colorLibrary().d50()));
    TransformHandle transform =
        source ? makeTransform(context, source, from, to, flags, ColorProfile::sRGB()) : nullptr;
    if (!transform)
        throw std::bad_alloc();
    return std::unique_ptr<TransformIntoRGB>(new TransformIntoRGB(std::move(context), std::move(transform)));
}

} // namespace kestrine

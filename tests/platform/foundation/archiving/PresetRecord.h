// An archived class of a higher layer: ResizeSet with its table of fields.
#pragma once

#include "platform/foundation/archiving/ArchivedFields.h"

namespace kestrine::testing {

struct ResizeSet final : NSObject {
    OptionalString name;
    std::int8_t replaceFile = 0;
    std::int32_t resizeType = 0;
    float height = 0, width = 0, ratio = 0, maxSize = 0;
    std::int32_t formatType = 0;
    float compression = 0;
    std::int8_t attachExifData = 0, convertResolution = 0, autoRotate = 0, chooseFolder = 0, highQuality = 0;

    static constexpr std::string_view className = "ResizeSet";
    static const ArchivedField<ResizeSet> fields[14];

    void encodeWithCoder(NSArchiver& coder) const { encodeFields<ResizeSet>(coder, *this, fields); }

    static std::shared_ptr<const ResizeSet> initWithCoder(NSUnarchiver& coder) {
        auto set = std::make_shared<ResizeSet>();
        set->highQuality = 1;
        decodeFields<ResizeSet>(coder, *set, fields, coder.versionForClassName(className));
        return set;
    }
};

inline constexpr ArchivedField<ResizeSet> ResizeSet::fields[14] = {
    {"name", &ResizeSet::name},
    {"replaceFile", &ResizeSet::replaceFile},
    {"resizeType", &ResizeSet::resizeType},
    {"height", &ResizeSet::height},
    {"width", &ResizeSet::width},
    {"ratio", &ResizeSet::ratio},
    {"maxSize", &ResizeSet::maxSize},
    {"formatType", &ResizeSet::formatType},
    {"compression", &ResizeSet::compression},
    {"attachExifData", &ResizeSet::attachExifData},
    {"convertResolution", &ResizeSet::convertResolution},
    {"autoRotate", &ResizeSet::autoRotate, 2},
    {"chooseFolder", &ResizeSet::chooseFolder, 3},
    {"highQuality", &ResizeSet::highQuality, 4},
};

inline constexpr ArchivedClass presetClasses[] = {archivedClass<ResizeSet>(ResizeSet::className, 4)};

} // namespace kestrine::testing

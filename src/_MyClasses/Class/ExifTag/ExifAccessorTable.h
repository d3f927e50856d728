// The accessors of ExifTagReader, one per row. To generate code for them, define some of the macros VALUE,
// FORMATTED, LOCALIZED and COMPUTED and include this file, which undefines them at its end. CONTRIBUTING.md
// describes how to add an accessor.

#ifndef VALUE
#define VALUE(name, directory, tag, rule, Kind)
#endif
#ifndef FORMATTED
#define FORMATTED(name, valueAccessor, format, valueFormatted)
#endif
#ifndef LOCALIZED
#define LOCALIZED(name, valueAccessor, key)
#endif
#ifndef COMPUTED
#define COMPUTED(name)
#endif

// clang-format off
// NOLINTBEGIN(misc-definitions-in-headers): the rows define functions only in ExifAccessor.cpp

//    accessor                     directory tag     rule              result
VALUE(maker,                       IFD0,   0x010F, raw,              StoredValue)
VALUE(cameraName,                  IFD0,   0x0110, raw,              StoredValue)
VALUE(imageDirectionNumber,        IFD0,   0x0112, first,            OptionalNumber)
VALUE(widthNumber,                 subIFD, 0xA002, first,            OptionalNumber)
VALUE(heightNumber,                subIFD, 0xA003, first,            OptionalNumber)
VALUE(exposureTimeNumber,          subIFD, 0x829A, rational,         OptionalNumber) // seconds
VALUE(fNumberNumber,               subIFD, 0x829D, rational,         OptionalNumber)
VALUE(exposureModeNumber,          subIFD, 0x8822, first,            OptionalNumber) // not 0xA402
VALUE(ISOSpeedRatingsNumber,       subIFD, 0x8827, first,            OptionalNumber)
VALUE(timeZoneOffset,              IFD1,   0x882A, first,            OptionalNumber) // hours; not subIFD
VALUE(dateTimeOriginal,            subIFD, 0x9003, raw,              StoredValue)    // YYYY:MM:DD HH:MM:SS
VALUE(dateTimeDigitized,           subIFD, 0x9004, raw,              StoredValue)
VALUE(compressedBitsPerPixelNumber, subIFD, 0x9102, rational,        OptionalNumber)
VALUE(shutterSpeedNumber,          subIFD, 0x9201, apexShutterSpeed, OptionalNumber) // 1 / seconds
VALUE(lensApertureNumber,          subIFD, 0x9202, apexAperture,     OptionalNumber) // f-number
VALUE(brightnessNumber,            subIFD, 0x9203, apexBrightness,   OptionalNumber) // EV
VALUE(exposureBiasNumber,          subIFD, 0x9204, rational,         OptionalNumber) // EV
VALUE(maxApertureNumber,           subIFD, 0x9205, apexAperture,     OptionalNumber) // f-number
VALUE(subjectDistanceNumber,       subIFD, 0x9206, rational,         OptionalNumber) // metres
VALUE(meteringModeNumber,          subIFD, 0x9207, first,            OptionalNumber)
VALUE(lightSourceNumber,           subIFD, 0x9208, first,            OptionalNumber)
VALUE(flashNumber,                 subIFD, 0x9209, first,            OptionalNumber)
VALUE(focalLengthNumber,           subIFD, 0x920A, rational,         OptionalNumber) // millimetres
VALUE(sceneTypeNumber,             subIFD, 0xA301, first,            OptionalNumber)
VALUE(whiteBalanceNumber,          subIFD, 0xA403, first,            OptionalNumber)
VALUE(focalLengthIn35mmFilmNumber, subIFD, 0xA405, first,            OptionalNumber) // millimetres
VALUE(gainControlNumber,           subIFD, 0xA407, first,            OptionalNumber)
VALUE(contrastNumber,              subIFD, 0xA408, first,            OptionalNumber)
VALUE(saturationNumber,            subIFD, 0xA409, first,            OptionalNumber)
VALUE(sharpnessNumber,             subIFD, 0xA40A, first,            OptionalNumber)
VALUE(subjectDistanceRangeNumber,  subIFD, 0xA40C, first,            OptionalNumber)

//        accessor                value accessor                format        value formatted
FORMATTED(fNumber,                fNumberNumber,                "f/%.1f",     asIs)
FORMATTED(lensAperture,           lensApertureNumber,           "f/%.1f",     asIs)
FORMATTED(maxAperture,            maxApertureNumber,            "f/%.1f",     asIs)
FORMATTED(focalLength,            focalLengthNumber,            "%.2f mm",    asIs)
FORMATTED(brightness,             brightnessNumber,             "%.1f EV",    asIs)
FORMATTED(exposureBias,           exposureBiasNumber,           "%.2f EV",    asIs)
FORMATTED(compressedBitsPerPixel, compressedBitsPerPixelNumber, "%.1f:1",     asIs)
FORMATTED(shutterSpeed,           shutterSpeedNumber,           "1/%.0f sec", asIs)
FORMATTED(exposureTime,           exposureTimeNumber,           "1/%.0f sec", reciprocal)
FORMATTED(subjectDistance,        subjectDistanceNumber,        "%.2f m",     integerPart)
FORMATTED(focalLengthIn35mmFilm,  focalLengthIn35mmFilmNumber,  "%dmm",       integerUnlessZero)
FORMATTED(ISOSpeedRatings,        ISOSpeedRatingsNumber,        "",           decimalText)

//        accessor              value accessor              key name
LOCALIZED(exposureMode,         exposureModeNumber,         "exposureMode")
LOCALIZED(meteringMode,         meteringModeNumber,         "meteringMode")
LOCALIZED(lightSource,          lightSourceNumber,          "lightSource")
LOCALIZED(flash,                flashNumber,                "flash")
LOCALIZED(sceneType,            sceneTypeNumber,            "sceneType")
LOCALIZED(whiteBalance,         whiteBalanceNumber,         "whiteBalance")
LOCALIZED(gainControl,          gainControlNumber,          "gainControl")
LOCALIZED(contrast,             contrastNumber,             "contrast")
LOCALIZED(saturation,           saturationNumber,           "saturation")
LOCALIZED(sharpness,            sharpnessNumber,            "sharpness")
LOCALIZED(subjectDistanceRange, subjectDistanceRangeNumber, "subjectDistanceRange")

// Display accessors with a separate function in ExifAccessor.cpp.
COMPUTED(digitalZoomRatio)

// NOLINTEND(misc-definitions-in-headers)
// clang-format on

#undef VALUE
#undef FORMATTED
#undef LOCALIZED
#undef COMPUTED

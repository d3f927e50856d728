// The EXIF tags that are used by name, with their numbers in CIPA DC-008.
#pragma once

#include <cstdint>

namespace kestrine::exiftag {

enum Tag : std::uint16_t {
    // of the main directory
    imageDescription = 0x010e,
    make = 0x010f,
    model = 0x0110,
    orientation = 0x0112,
    xResolution = 0x011a,
    yResolution = 0x011b,
    resolutionUnit = 0x0128,
    software = 0x0131,
    dateTime = 0x0132,
    artist = 0x013b,
    copyright = 0x8298,
    exifDirectoryPointer = 0x8769,
    gpsPointer = 0x8825,
    // of the Exif directory
    dateTimeOriginal = 0x9003,
    dateTimeDigitized = 0x9004,
    subjectArea = 0x9214,
    makerNote = 0x927c,
    userComment = 0x9286,
    colorSpace = 0xa001,
    pixelXDimension = 0xa002,
    pixelYDimension = 0xa003,
    interoperabilityPointer = 0xa005,
    focalPlaneXResolution = 0xa20e,
    focalPlaneYResolution = 0xa20f,
    focalPlaneResolutionUnit = 0xa210,
    subjectLocation = 0xa214,
    colorFilterPattern = 0xa302,
    // of the interoperability directory
    interoperabilityIndex = 0x0001,
    // of the GPS directory
    gpsProcessingMethod = 0x001b,
    gpsAreaInformation = 0x001c,
};

} // namespace kestrine::exiftag

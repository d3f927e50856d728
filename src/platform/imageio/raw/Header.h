// Header: what a camera raw file holds beside the data of the sensor.
#pragma once

#include "platform/imageio/Box.h"
#include "platform/imageio/ImageCodec.h"

#include <optional>
#include <vector>

namespace kestrine::raw {

using Sides = FrameDescription::Sides;

struct Header {
    std::vector<FileRange> previews; ///< JPEG files, perhaps; at most 16
    std::optional<Sides> sensor;     ///< of the picture that its data make, lying or standing
    std::optional<int> orientation;  ///< EXIF, 1 to 8
    Bytes exif;                      ///< as in the file; empty if the preview has it
};

/// Formats with the directories of TIFF: most of them.
Header readDirectories(const std::shared_ptr<const ByteReader>& reader);
/// RAF: a list of places, and the numbers of the sensor.
Header readRAF(const ByteReader& reader);
/// CR3: ISO boxes.
Header readCR3(const ByteReader& reader);

/// Whether both sides of a preview, lying or standing, are at least 90 % of the sensor's. The sensor's data
/// have a margin, which developed pictures lack.
bool isLargeEnough(Sides preview, Sides sensor);

} // namespace kestrine::raw

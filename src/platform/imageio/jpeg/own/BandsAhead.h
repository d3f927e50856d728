// BandsAhead: the bands of a JPEG file, which a crew decodes ahead; several at a time in a sequential file
// with restart markers, since nothing after a marker depends on what is before it.
#pragma once

#include "platform/imageio/jpeg/own/BandSource.h"

namespace kestrine::jpeg {

/// Null if there is no crew for the picture. Fails like openOwnRows(). The bands between two restart markers
/// fail if one of them is damaged, or if the second marker is not the expected one.
Result<std::unique_ptr<BandSource>> openBandsAhead(const std::shared_ptr<const ByteReader>& reader,
                                                   const FrameHeader& header, int eighths);

} // namespace kestrine::jpeg

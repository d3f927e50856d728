// The questions about the EXIF data of an opened file, which the process that decodes it answers.
#pragma once

#include "platform/imageio/KeptMetadata.h"
#include "platform/imageio/TakenDate.h"

#include <array>

namespace kestrine {

/// One byte: the orientation by which pictures are turned upright, 0 if there is none.
Result<Bytes> orientationOf(const std::shared_ptr<const ByteReader>& file);

/// The byte form of the tags (TagMessage.h).
Result<Bytes> tagsOf(const std::shared_ptr<const ByteReader>& file);

/// All of them: the table that a WorkerEngine needs.
inline constexpr std::array<FileQuestion, 4> exifQuestions = {orientationOf, tagsOf, takenDateOf, metadataOf};

} // namespace kestrine

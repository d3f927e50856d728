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

/// The same for EXIF data in either byte order, anywhere in a file of any format with EXIF data, and for the
/// first directory of files with a TIFF structure. What ExifTagReader finds by itself is taken as it is;
/// other data is rewritten for it, with GPS data and without notes of the maker and thumbnails.
Result<Bytes> allTagsOf(const std::shared_ptr<const ByteReader>& file);

/// All of them: the table that a WorkerEngine needs.
inline constexpr std::array<FileQuestion, 5> exifQuestions = {orientationOf, tagsOf, allTagsOf, takenDateOf,
                                                              metadataOf};

} // namespace kestrine

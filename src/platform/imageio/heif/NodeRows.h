// NodeRows: the rows of a picture that is put together from coded pictures.
#pragma once

#include "platform/coregraphics/RowSource.h"
#include "platform/imageio/heif/PictureTree.h"

namespace kestrine::heif {

/// The rows of `root` before its turn (see Placement), after cuts and reflection. Every coded picture is
/// decoded when its first row is needed. `root` must keep the header of the file, which its properties are
/// views into. Tiles are decoded by as many threads as are useful. `layout` gives
/// model, alpha and depth of the pixels. Fails while rows are read if a coded picture is damaged.
RowSourcePointer rowsOfPicture(const PictureNodePointer& root, std::shared_ptr<const ByteReader> reader,
                               const RowFormat& layout);

/// Estimated memory that rowsOfPicture() needs for decoded pictures, in bytes.
std::uint64_t bytesHeldFor(const PictureNode& root, const RowFormat& layout);

} // namespace kestrine::heif

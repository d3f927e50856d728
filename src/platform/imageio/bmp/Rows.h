// The rows of a BMP picture.
#pragma once

#include "platform/coregraphics/RowSource.h"
#include "platform/imageio/bmp/Header.h"

namespace kestrine::bmp {

/// The rows in header.format(). Run-length codes are read once to find the rows.
Result<RowSourcePointer> rowsOfBMP(std::shared_ptr<const ByteReader> reader, const Header& header);

} // namespace kestrine::bmp

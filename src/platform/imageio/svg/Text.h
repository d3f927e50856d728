// Text: the text of an SVG file, which may be compressed with gzip (svgz).
#pragma once

#include "platform/host/files/ByteReader.h"

namespace kestrine::svg {

/// Whether a file with these first bytes is XML whose first element is an SVG drawing, or is compressed and
/// may be one: without a name of its own, or named .svg.
bool isDrawing(ByteView head);

/// The text, decompressed. Fails with reason "tooLarge" above 64 MiB, and with "malformed" or "truncated".
Result<Bytes> readText(const ByteReader& reader);

/// Whether files, such as fonts, may be opened while this is drawn: whether it holds strings or pictures, or
/// may make them of entities.
bool mayOpenFiles(ByteView text);

} // namespace kestrine::svg

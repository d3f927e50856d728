// The codecs, one a line, and the encoders.
#pragma once

#include "platform/imageio/ImageCodec.h"

namespace kestrine {

extern const ImageCodec jpegCodec; // JPEGDecoder.cpp
extern const ImageCodec pngCodec;  // PNGDecoder.cpp
extern const ImageCodec gifCodec;  // GIFDecoder.cpp
extern const ImageCodec tiffCodec; // TIFFDecoder.cpp
extern const ImageCodec webpCodec; // WebPDecoder.cpp
extern const ImageCodec bmpCodec;  // BMPDecoder.cpp
extern const ImageCodec pnmCodec;  // PNMDecoder.cpp

/// Consumes all rows and gives the file's bytes. The rows must suit the format:
/// JPEG takes 8-bit samples without alpha, GIF 8-bit samples, PNG and TIFF everything.
Result<Bytes> encodeJPEG(RowSource& rows, const EncodingOptions& options); // JPEGEncoder.cpp
Result<Bytes> encodePNG(RowSource& rows, const EncodingOptions& options);  // PNGEncoder.cpp
Result<Bytes> encodeGIF(RowSource& rows, const EncodingOptions& options);  // GIFEncoder.cpp
Result<Bytes> encodeTIFF(RowSource& rows, const EncodingOptions& options); // TIFFEncoder.cpp

} // namespace kestrine

// The codecs, one per format, and the encoders.
#pragma once

#include "platform/imageio/Encoder.h"

// Each is defined in the Decoder.cpp of its format's folder.
namespace kestrine::jpeg {
extern const ImageCodec codec;
}
namespace kestrine::png {
extern const ImageCodec codec;
}
namespace kestrine::gif {
extern const ImageCodec codec;
}
namespace kestrine::tiff {
extern const ImageCodec codec;
}
namespace kestrine::webp {
extern const ImageCodec codec;
}
namespace kestrine::heif {
extern const ImageCodec heicCodec, avifCodec;
}
namespace kestrine::jp2 {
extern const ImageCodec codec;
}
namespace kestrine::jxl {
extern const ImageCodec codec;
}
namespace kestrine::bmp {
extern const ImageCodec codec;
}
namespace kestrine::pnm {
extern const ImageCodec codec;
}
namespace kestrine::icns {
extern const ImageCodec codec;
}
namespace kestrine::ico {
extern const ImageCodec codec;
}
namespace kestrine::pcx {
extern const ImageCodec codec;
}
namespace kestrine::psd {
extern const ImageCodec codec;
}
namespace kestrine::qoi {
extern const ImageCodec codec;
}
namespace kestrine::raw {
extern const ImageCodec codec;
}
namespace kestrine::sgi {
extern const ImageCodec codec;
}
namespace kestrine::svg {
/// Leaves drawings that need fonts, which take long to open, to the other codec.
extern const ImageCodec codec, codecWithFonts;
} // namespace kestrine::svg
namespace kestrine::tga {
extern const ImageCodec codec;
}

// An encoder consumes all rows and writes the bytes of the file. Each is defined in the Encoder.cpp of its
// format's folder. The rows must suit the format: see OutputFormats.cpp.
namespace kestrine::jpeg {
Result<void> encode(RowSource& rows, const EncodingOptions& options, ByteSink& file);
}
namespace kestrine::png {
/// Opens the libraries of the encoder.
void openLibraries();
Result<void> encode(RowSource& rows, const EncodingOptions& options, ByteSink& file);
} // namespace kestrine::png
namespace kestrine::gif {
Result<void> encode(RowSource& rows, const EncodingOptions& options, ByteSink& file);
}
namespace kestrine::tiff {
Result<void> encode(RowSource& rows, const EncodingOptions& options, ByteSink& file);
}
namespace kestrine::webp {
Result<void> encode(RowSource& rows, const EncodingOptions& options, ByteSink& file);
}
namespace kestrine::avif {
/// Opens the library of the encoder.
void openLibraries();
Result<void> encode(RowSource& rows, const EncodingOptions& options, ByteSink& file);
} // namespace kestrine::avif
namespace kestrine::jxl {
Result<void> encode(RowSource& rows, const EncodingOptions& options, ByteSink& file);
}

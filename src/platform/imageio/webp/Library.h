// libwebp and libwebpdemux, opened when the first WebP file asks for them: their functions as a table.
// Their headers serve for types only; nothing here links to them.
#pragma once

#include "platform/host/Result.h"

#include <initializer_list>
#include <webp/decode.h>
#include <webp/demux.h>

namespace kestrine::webp {

/// The functions that are called, under the libraries' names without "WebP".
struct Functions {
    decltype(&WebPDecodeRGBInto) decodeRGB;
    decltype(&WebPDecodeRGBAInto) decodeRGBA;
    decltype(&WebPDemuxInternal) openFile;
    decltype(&WebPDemuxDelete) closeFile;
    decltype(&WebPDemuxGetI) number;
    decltype(&WebPDemuxGetFrame) frame;
    decltype(&WebPDemuxReleaseIterator) releaseFrame;
    decltype(&WebPDemuxGetChunk) chunk;
    decltype(&WebPDemuxReleaseChunkIterator) releaseChunk;
};

/// The functions in the first of each list that is there; unsupported, naming the packages, without them.
Result<Functions> loadFunctions(std::initializer_list<const char*> decoders,
                                        std::initializer_list<const char*> demuxers);

/// The functions of the system's libraries, looked up once.
const Result<Functions>& webpFunctions();

} // namespace kestrine::webp

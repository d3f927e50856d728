// The functions of libwebp and libwebpdemux, which are opened when the first WebP file is read.
// Their headers are used for types only; the program does not link to the libraries.
#pragma once

#include "platform/host/Result.h"

#include <initializer_list>
#include <webp/decode.h>
#include <webp/demux.h>
#include <webp/encode.h>

namespace kestrine::webp {

/// The functions that are used.
struct Functions {
    // of the decoder
    decltype(&WebPGetFeaturesInternal) features;
    decltype(&WebPDecodeRGBAInto) decodeRGBA;
    decltype(&WebPInitDecBufferInternal) initializeBuffer;
    decltype(&WebPINewDecoder) createDecoder;
    decltype(&WebPIUpdate) decodeMore;
    decltype(&WebPIDecGetRGB) decodedRows;
    decltype(&WebPIDelete) deleteDecoder;
    decltype(&WebPDemuxInternal) openFile;
    decltype(&WebPDemuxDelete) closeFile;
    decltype(&WebPDemuxGetI) number;
    decltype(&WebPDemuxGetFrame) frame;
    decltype(&WebPDemuxReleaseIterator) releaseFrame;
    decltype(&WebPDemuxGetChunk) chunk;
    decltype(&WebPDemuxReleaseChunkIterator) releaseChunk;
    // of the encoder
    decltype(&WebPConfigInitInternal) configure;
    decltype(&WebPConfigLosslessPreset) configureLossless;
    decltype(&WebPPictureInitInternal) initializePicture;
    decltype(&WebPPictureImportRGB) importRGB;
    decltype(&WebPPictureImportRGBA) importRGBA;
    decltype(&WebPPictureFree) freePicture;
    decltype(&WebPMemoryWriterInit) initializeWriter;
    decltype(&WebPMemoryWrite) write;
    decltype(&WebPMemoryWriterClear) freeWriter;
    decltype(&WebPEncode) encode;
};

/// The functions of the first library of each list that exists. Fails with reason "unsupported" and names the
/// packages if one is missing.
Result<Functions> loadFunctions(std::initializer_list<const char*> coders,
                                std::initializer_list<const char*> demuxers);

/// The functions of the installed libraries; opened once. Any thread.
const Result<Functions>& installedFunctions();

} // namespace kestrine::webp

#include "platform/imageio/webp/Library.h"
#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

namespace kestrine::webp {

Result<Functions> loadFunctions(std::initializer_list<const char*> coders,
                                std::initializer_list<const char*> demuxers) {
    const Failure missing{Reason::unsupported,
                          std::string("WebP pictures need libwebp and libwebpdemux (packages ")
                              + systemLibrary(OnDemand::webp).package + " and "
                              + systemLibrary(OnDemand::webpDemux).package + ")"};
    const Result<DynamicLibrary> coder = DynamicLibrary::open(coders);
    const Result<DynamicLibrary> demuxer = DynamicLibrary::open(demuxers);
    if (!coder || !demuxer)
        return missing;
    Functions functions{};
    const bool complete = coder->find(functions.features, "WebPGetFeaturesInternal")
                          && coder->find(functions.decodeRGBA, "WebPDecodeRGBAInto")
                          && coder->find(functions.initializeBuffer, "WebPInitDecBufferInternal")
                          && coder->find(functions.createDecoder, "WebPINewDecoder")
                          && coder->find(functions.decodeMore, "WebPIUpdate")
                          && coder->find(functions.decodedRows, "WebPIDecGetRGB")
                          && coder->find(functions.deleteDecoder, "WebPIDelete")
                          && demuxer->find(functions.openFile, "WebPDemuxInternal")
                          && demuxer->find(functions.closeFile, "WebPDemuxDelete")
                          && demuxer->find(functions.number, "WebPDemuxGetI")
                          && demuxer->find(functions.frame, "WebPDemuxGetFrame")
                          && demuxer->find(functions.releaseFrame, "WebPDemuxReleaseIterator")
                          && demuxer->find(functions.chunk, "WebPDemuxGetChunk")
                          && demuxer->find(functions.releaseChunk, "WebPDemuxReleaseChunkIterator")
                          && coder->find(functions.configure, "WebPConfigInitInternal")
                          && coder->find(functions.configureLossless, "WebPConfigLosslessPreset")
                          && coder->find(functions.initializePicture, "WebPPictureInitInternal")
                          && coder->find(functions.importRGB, "WebPPictureImportRGB")
                          && coder->find(functions.importRGBA, "WebPPictureImportRGBA")
                          && coder->find(functions.freePicture, "WebPPictureFree")
                          && coder->find(functions.initializeWriter, "WebPMemoryWriterInit")
                          && coder->find(functions.write, "WebPMemoryWrite")
                          && coder->find(functions.freeWriter, "WebPMemoryWriterClear")
                          && coder->find(functions.encode, "WebPEncode");
    if (!complete)
        return missing;
    return functions;
}

const Result<Functions>& installedFunctions() {
    static const Result<Functions> functions =
        loadFunctions({systemLibrary(OnDemand::webp).file}, {systemLibrary(OnDemand::webpDemux).file});
    return functions;
}

} // namespace kestrine::webp

#include "platform/imageio/webp/Library.h"
#include "platform/host/process/DynamicLibrary.h"

namespace kestrine::webp {

Result<Functions> loadFunctions(std::initializer_list<const char*> decoders,
                                std::initializer_list<const char*> demuxers) {
    const Failure missing{
        Reason::unsupported,
        "WebP pictures need libwebp and libwebpdemux (packages libwebp7 and libwebpdemux2)"};
    const Result<DynamicLibrary> decoder = DynamicLibrary::open(decoders);
    const Result<DynamicLibrary> demuxer = DynamicLibrary::open(demuxers);
    if (!decoder || !demuxer)
        return missing;
    Functions functions{};
    const auto find = []<class F>(const DynamicLibrary& library, F*& function, const char* name) {
        function = library.symbol<F>(name);
        return function != nullptr;
    };
    const bool complete = find(*decoder, functions.decodeRGB, "WebPDecodeRGBInto")
                          && find(*decoder, functions.decodeRGBA, "WebPDecodeRGBAInto")
                          && find(*demuxer, functions.openFile, "WebPDemuxInternal")
                          && find(*demuxer, functions.closeFile, "WebPDemuxDelete")
                          && find(*demuxer, functions.number, "WebPDemuxGetI")
                          && find(*demuxer, functions.frame, "WebPDemuxGetFrame")
                          && find(*demuxer, functions.releaseFrame, "WebPDemuxReleaseIterator")
                          && find(*demuxer, functions.chunk, "WebPDemuxGetChunk")
                          && find(*demuxer, functions.releaseChunk, "WebPDemuxReleaseChunkIterator");
    if (!complete)
        return missing;
    return functions;
}

namespace {

Result<EncoderFunctions> loadEncoder() {
    const Failure missing{Reason::unsupported, "WebP pictures need libwebp (package libwebp7)"};
    const Result<DynamicLibrary> library = DynamicLibrary::open({"libwebp.so.7"});
    if (!library)
        return missing;
    EncoderFunctions functions{};
    const auto find = [&library]<class F>(F*& function, const char* name) {
        function = library->symbol<F>(name);
        return function != nullptr;
    };
    const bool complete = find(functions.configure, "WebPConfigInitInternal")
                          && find(functions.configureLossless, "WebPConfigLosslessPreset")
                          && find(functions.initializePicture, "WebPPictureInitInternal")
                          && find(functions.importRGB, "WebPPictureImportRGB")
                          && find(functions.importRGBA, "WebPPictureImportRGBA")
                          && find(functions.freePicture, "WebPPictureFree")
                          && find(functions.initializeWriter, "WebPMemoryWriterInit")
                          && find(functions.write, "WebPMemoryWrite")
                          && find(functions.freeWriter, "WebPMemoryWriterClear")
                          && find(functions.encode, "WebPEncode");
    if (!complete)
        return missing;
    return functions;
}

} // namespace

const Result<EncoderFunctions>& installedEncoder() {
    static const Result<EncoderFunctions> functions = loadEncoder();
    return functions;
}

const Result<Functions>& installedFunctions() {
    static const Result<Functions> functions = loadFunctions({"libwebp.so.7"}, {"libwebpdemux.so.2"});
    return functions;
}

} // namespace kestrine::webp

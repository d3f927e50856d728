#include "platform/imageio/jp2/Library.h"

#include "platform/host/process/DynamicLibrary.h"

namespace kestrine::jp2 {

namespace {

Result<Functions> loadFunctions() {
    const Failure missing{Reason::unsupported, "JPEG 2000 pictures need OpenJPEG (package libopenjp2-7)"};
    const Result<DynamicLibrary> library = DynamicLibrary::open({"libopenjp2.so.7"});
    if (!library)
        return missing;
    Functions functions{};
    const auto find = [&library]<class F>(F*& function, const char* name) {
        function = library->symbol<F>(name);
        return function != nullptr;
    };
    const bool complete =
        find(functions.createStream, "opj_stream_create")
        && find(functions.destroyStream, "opj_stream_destroy")
        && find(functions.setRead, "opj_stream_set_read_function")
        && find(functions.setSkip, "opj_stream_set_skip_function")
        && find(functions.setSeek, "opj_stream_set_seek_function")
        && find(functions.setUserData, "opj_stream_set_user_data")
        && find(functions.setLength, "opj_stream_set_user_data_length")
        && find(functions.createDecoder, "opj_create_decompress")
        && find(functions.destroyDecoder, "opj_destroy_codec")
        && find(functions.defaultParameters, "opj_set_default_decoder_parameters")
        && find(functions.setUp, "opj_setup_decoder") && find(functions.setThreads, "opj_codec_set_threads")
        && find(functions.readHeader, "opj_read_header") && find(functions.destroyImage, "opj_image_destroy")
        && find(functions.describe, "opj_get_cstr_info")
        && find(functions.destroyDescription, "opj_destroy_cstr_info")
        && find(functions.decodeTile, "opj_get_decoded_tile");
    if (!complete)
        return missing;
    return functions;
}

} // namespace

const Result<Functions>& installedFunctions() {
    static const Result<Functions> functions = loadFunctions();
    return functions;
}

} // namespace kestrine::jp2

#include "platform/imageio/jp2/Library.h"

#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

namespace kestrine::jp2 {

Result<Functions> loadFunctions(std::initializer_list<const char*> names) {
    return DynamicLibrary::load<Functions>(
        names, missingMessage("JPEG 2000 pictures need OpenJPEG", OnDemand::openJPEG),
        [](const DynamicLibrary& library, Functions& functions) {
            return library.find(functions.createStream, "opj_stream_create")
                   && library.find(functions.destroyStream, "opj_stream_destroy")
                   && library.find(functions.setRead, "opj_stream_set_read_function")
                   && library.find(functions.setSkip, "opj_stream_set_skip_function")
                   && library.find(functions.setSeek, "opj_stream_set_seek_function")
                   && library.find(functions.setUserData, "opj_stream_set_user_data")
                   && library.find(functions.setLength, "opj_stream_set_user_data_length")
                   && library.find(functions.createDecoder, "opj_create_decompress")
                   && library.find(functions.destroyDecoder, "opj_destroy_codec")
                   && library.find(functions.defaultParameters, "opj_set_default_decoder_parameters")
                   && library.find(functions.setUp, "opj_setup_decoder")
                   && library.find(functions.setThreads, "opj_codec_set_threads")
                   && library.find(functions.readHeader, "opj_read_header")
                   && library.find(functions.destroyImage, "opj_image_destroy")
                   && library.find(functions.describe, "opj_get_cstr_info")
                   && library.find(functions.destroyDescription, "opj_destroy_cstr_info")
                   && library.find(functions.decodeTile, "opj_get_decoded_tile");
        });
}

const Result<Functions>& installedFunctions() {
    static const Result<Functions> functions = loadFunctions({systemLibrary(OnDemand::openJPEG).file});
    return functions;
}

} // namespace kestrine::jp2

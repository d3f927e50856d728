// The functions of OpenJPEG, which is opened when the first JPEG 2000 file is read. Its header is used for
// types only; the program does not link to the library.
#pragma once

#include "platform/host/Result.h"

#include <initializer_list>
#include <openjpeg-2.5/openjpeg.h>

namespace kestrine::jp2 {

/// The functions that are used.
struct Functions {
    decltype(&opj_stream_create) createStream;
    decltype(&opj_stream_destroy) destroyStream;
    decltype(&opj_stream_set_read_function) setRead;
    decltype(&opj_stream_set_skip_function) setSkip;
    decltype(&opj_stream_set_seek_function) setSeek;
    decltype(&opj_stream_set_user_data) setUserData;
    decltype(&opj_stream_set_user_data_length) setLength;
    decltype(&opj_create_decompress) createDecoder;
    decltype(&opj_destroy_codec) destroyDecoder;
    decltype(&opj_set_default_decoder_parameters) defaultParameters;
    decltype(&opj_setup_decoder) setUp;
    decltype(&opj_codec_set_threads) setThreads;
    decltype(&opj_read_header) readHeader;
    decltype(&opj_image_destroy) destroyImage;
    decltype(&opj_get_cstr_info) describe;
    decltype(&opj_destroy_cstr_info) destroyDescription;
    decltype(&opj_get_decoded_tile) decodeTile;
};

/// The functions of the first of these libraries that exists. Fails with reason "unsupported" and names the
/// package if there is none.
Result<Functions> loadFunctions(std::initializer_list<const char*> names);

/// The functions of the installed library; opened once. Any thread.
const Result<Functions>& installedFunctions();

} // namespace kestrine::jp2

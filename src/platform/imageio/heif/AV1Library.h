// The functions of dav1d, which is opened when the first AVIF file is read. Its header is used for types
// only; the program does not link to the library.
#pragma once

#include "platform/host/Result.h"

#include <dav1d/dav1d.h>
#include <initializer_list>

namespace kestrine::heif {

struct AV1Functions {
    decltype(&dav1d_default_settings) setDefaults;
    decltype(&dav1d_open) open;
    decltype(&dav1d_close) close;
    decltype(&dav1d_data_create) createData;
    decltype(&dav1d_data_unref) releaseData;
    decltype(&dav1d_send_data) sendData;
    decltype(&dav1d_get_picture) nextPicture;
    decltype(&dav1d_picture_unref) releasePicture;
    decltype(&dav1d_parse_sequence_header) parseSequenceHeader;
};

/// The functions of the first library of the list that exists. Fails with reason "unsupported" and names the
/// package if it is missing.
Result<AV1Functions> loadAV1Functions(std::initializer_list<const char*> names);

/// The functions of the installed library; opened once. Any thread.
const Result<AV1Functions>& av1Functions();

} // namespace kestrine::heif

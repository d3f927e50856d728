// The functions of libavif, which is opened when the first AVIF file is written. Its header is used for types
// only; the program does not link to the library.
#pragma once

#include "platform/host/Result.h"

#include <avif/avif.h>
#include <initializer_list>

namespace kestrine::avif {

/// The functions that are used.
struct Functions {
    decltype(&avifImageCreate) createImage;
    decltype(&avifImageDestroy) destroyImage;
    decltype(&avifImageAllocatePlanes) allocatePlanes;
    decltype(&avifImageSetProfileICC) setProfile;
    decltype(&avifImageSetMetadataExif) setExif;
    decltype(&avifRGBImageSetDefaults) setRGBDefaults;
    decltype(&avifImageRGBToYUV) convertRGB;
    decltype(&avifEncoderCreate) createEncoder;
    decltype(&avifEncoderDestroy) destroyEncoder;
    decltype(&avifEncoderSetCodecSpecificOption) setOption;
    decltype(&avifEncoderWrite) encode;
    decltype(&avifRWDataFree) freeData;
};

/// The functions of the first of these libraries that exists. Fails with reason "unsupported" and names the
/// package if none does.
Result<Functions> loadFunctions(std::initializer_list<const char*> names);

/// The functions of the installed library; opened once. Any thread.
const Result<Functions>& installedFunctions();

} // namespace kestrine::avif

#include "platform/imageio/avif/Library.h"

#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

namespace kestrine::avif {

Result<Functions> loadFunctions(std::initializer_list<const char*> names) {
    return DynamicLibrary::load<Functions>(
        names, missingMessage("writing AVIF pictures needs libavif", OnDemand::avif),
        [](const DynamicLibrary& library, Functions& functions) {
            return library.find(functions.createImage, "avifImageCreate")
                   && library.find(functions.destroyImage, "avifImageDestroy")
                   && library.find(functions.allocatePlanes, "avifImageAllocatePlanes")
                   && library.find(functions.setProfile, "avifImageSetProfileICC")
                   && library.find(functions.setExif, "avifImageSetMetadataExif")
                   && library.find(functions.setRGBDefaults, "avifRGBImageSetDefaults")
                   && library.find(functions.convertRGB, "avifImageRGBToYUV")
                   && library.find(functions.createEncoder, "avifEncoderCreate")
                   && library.find(functions.destroyEncoder, "avifEncoderDestroy")
                   && library.find(functions.setOption, "avifEncoderSetCodecSpecificOption")
                   && library.find(functions.encode, "avifEncoderWrite")
                   && library.find(functions.freeData, "avifRWDataFree");
        });
}

const Result<Functions>& installedFunctions() {
    static const Result<Functions> functions = loadFunctions({systemLibrary(OnDemand::avif).file});
    return functions;
}

} // namespace kestrine::avif

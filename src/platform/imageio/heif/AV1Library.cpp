#include "platform/imageio/heif/AV1Library.h"

#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

namespace kestrine::heif {

Result<AV1Functions> loadAV1Functions(std::initializer_list<const char*> names) {
    return DynamicLibrary::load<AV1Functions>(
        names, missingMessage("AVIF pictures need dav1d", OnDemand::dav1d),
        [](const DynamicLibrary& library, AV1Functions& functions) {
            return library.find(functions.setDefaults, "dav1d_default_settings")
                   && library.find(functions.open, "dav1d_open")
                   && library.find(functions.close, "dav1d_close")
                   && library.find(functions.createData, "dav1d_data_create")
                   && library.find(functions.releaseData, "dav1d_data_unref")
                   && library.find(functions.sendData, "dav1d_send_data")
                   && library.find(functions.nextPicture, "dav1d_get_picture")
                   && library.find(functions.releasePicture, "dav1d_picture_unref")
                   && library.find(functions.parseSequenceHeader, "dav1d_parse_sequence_header");
        });
}

const Result<AV1Functions>& av1Functions() {
    static const Result<AV1Functions> functions = loadAV1Functions({systemLibrary(OnDemand::dav1d).file});
    return functions;
}

} // namespace kestrine::heif

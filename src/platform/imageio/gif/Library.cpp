#include "platform/imageio/gif/Library.h"

#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

namespace kestrine::gif {

Result<Functions> loadFunctions(std::initializer_list<const char*> names) {
    return DynamicLibrary::load<Functions>(
        names, missingMessage("GIF pictures need giflib", OnDemand::gif),
        [](const DynamicLibrary& library, Functions& functions) {
            return library.find(functions.close, "DGifCloseFile")
                   && library.find(functions.parseControl, "DGifExtensionToGCB")
                   && library.find(functions.readExtension, "DGifGetExtension")
                   && library.find(functions.readExtensionBlock, "DGifGetExtensionNext")
                   && library.find(functions.readDescriptor, "DGifGetImageDesc")
                   && library.find(functions.readCode, "DGifGetLZCodes")
                   && library.find(functions.readIndices, "DGifGetLine")
                   && library.find(functions.readRecordType, "DGifGetRecordType")
                   && library.find(functions.open, "DGifOpen");
        });
}

const Result<Functions>& installedFunctions() {
    static const Result<Functions> functions = loadFunctions({systemLibrary(OnDemand::gif).file});
    return functions;
}

} // namespace kestrine::gif

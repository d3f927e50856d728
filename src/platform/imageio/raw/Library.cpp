#include "platform/imageio/raw/Library.h"

#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

namespace kestrine::raw {

Result<Functions> loadFunctions(std::initializer_list<const char*> names) {
    return DynamicLibrary::load<Functions>(
        names, missingMessage("this camera raw file needs LibRaw", OnDemand::libRaw),
        [](const DynamicLibrary& library, Functions& functions) {
            library.find(functions.setThreads, "omp_set_num_threads"); // may be absent
            return library.find(functions.create, "libraw_init")
                   && library.find(functions.destroy, "libraw_close")
                   && library.find(functions.setDataErrorHandler, "libraw_set_dataerror_handler")
                   && library.find(functions.adjustSizes, "libraw_adjust_sizes_info_only")
                   && library.find(functions.unpack, "libraw_unpack")
                   && library.find(functions.unpackPreview, "libraw_unpack_thumb")
                   && library.find(functions.develop, "libraw_dcraw_process")
                   && library.find(functions.makePixels, "libraw_dcraw_make_mem_image")
                   && library.find(functions.freePixels, "libraw_dcraw_clear_mem")
                   && library.find(functions.openStream,
                                   "_ZN6LibRaw15open_datastreamEP26LibRaw_abstract_datastream")
                   && library.find(functions.attachJPEGSource, "_ZN26LibRaw_abstract_datastream8jpeg_srcEPv");
        });
}

const Result<Functions>& installedFunctions() {
    static const Result<Functions> functions = loadFunctions({systemLibrary(OnDemand::libRaw).file});
    return functions;
}

} // namespace kestrine::raw

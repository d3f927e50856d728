#include "platform/imageio/heif/HEVCLibrary.h"

#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

namespace kestrine::heif {

Result<HEVCFunctions> loadHEVCFunctions(std::initializer_list<const char*> names) {
    return DynamicLibrary::load<HEVCFunctions>(
        names, missingMessage("HEIC pictures need libde265", OnDemand::de265),
        [](const DynamicLibrary& library, HEVCFunctions& functions) {
            // Calls prepare() once. Otherwise the library makes its tables with the first open decoder and
            // frees them with the last.
            return library.find(functions.prepare, "de265_init")
                   && library.find(functions.create, "de265_new_decoder")
                   && library.find(functions.destroy, "de265_free_decoder")
                   && library.find(functions.startThreads, "de265_start_worker_threads")
                   && library.find(functions.setFlag, "de265_set_parameter_bool")
                   && library.find(functions.setAllocation, "de265_set_image_allocation_functions")
                   && library.find(functions.setPlane, "de265_set_image_plane")
                   && library.find(functions.planeData, "de265_get_image_plane_user_data")
                   && library.find(functions.push, "de265_push_NAL")
                   && library.find(functions.endOfData, "de265_flush_data")
                   && library.find(functions.decode, "de265_decode")
                   && library.find(functions.nextPicture, "de265_get_next_picture")
                   && library.find(functions.width, "de265_get_image_width")
                   && library.find(functions.height, "de265_get_image_height")
                   && library.find(functions.chroma, "de265_get_chroma_format")
                   && library.find(functions.bits, "de265_get_bits_per_pixel")
                   && library.find(functions.plane, "de265_get_image_plane")
                   && library.find(functions.isFullRange, "de265_get_image_full_range_flag")
                   && library.find(functions.primaries, "de265_get_image_colour_primaries")
                   && library.find(functions.transfer, "de265_get_image_transfer_characteristics")
                   && library.find(functions.matrix, "de265_get_image_matrix_coefficients")
                   && functions.prepare() == DE265_OK;
        });
}

const Result<HEVCFunctions>& hevcFunctions() {
    static const Result<HEVCFunctions> functions = loadHEVCFunctions({systemLibrary(OnDemand::de265).file});
    return functions;
}

} // namespace kestrine::heif

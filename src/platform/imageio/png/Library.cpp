#include "platform/imageio/png/Library.h"

#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

#include <cstring>
#include <string_view>

namespace kestrine::png {

Result<Functions> loadFunctions(std::initializer_list<const char*> names) {
    return DynamicLibrary::load<Functions>(
        names, missingMessage("PNG pictures need libpng", OnDemand::png),
        [](const DynamicLibrary& library, Functions& functions) {
            return library.find(functions.createInfoStruct, "png_create_info_struct")
                   && library.find(functions.createReadStruct, "png_create_read_struct")
                   && library.find(functions.createWriteStruct, "png_create_write_struct")
                   && library.find(functions.destroyReadStruct, "png_destroy_read_struct")
                   && library.find(functions.destroyWriteStruct, "png_destroy_write_struct")
                   && library.find(functions.fail, "png_error")
                   && library.find(functions.getPLTE, "png_get_PLTE")
                   && library.find(functions.getBitDepth, "png_get_bit_depth")
                   && library.find(functions.getCHRMFixed, "png_get_cHRM_fixed")
                   && library.find(functions.getChannels, "png_get_channels")
                   && library.find(functions.getColorType, "png_get_color_type")
                   && library.find(functions.getErrorPtr, "png_get_error_ptr")
                   && library.find(functions.getGAMAFixed, "png_get_gAMA_fixed")
                   && library.find(functions.getICCP, "png_get_iCCP")
                   && library.find(functions.getImageHeight, "png_get_image_height")
                   && library.find(functions.getImageWidth, "png_get_image_width")
                   && library.find(functions.getInterlaceType, "png_get_interlace_type")
                   && library.find(functions.getIoPtr, "png_get_io_ptr")
                   && library.find(functions.getPHYs, "png_get_pHYs")
                   && library.find(functions.getRowbytes, "png_get_rowbytes")
                   && library.find(functions.getTRNS, "png_get_tRNS")
                   && library.find(functions.getValid, "png_get_valid")
                   && library.find(functions.longJump, "png_longjmp")
                   && library.find(functions.readEnd, "png_read_end")
                   && library.find(functions.readInfo, "png_read_info")
                   && library.find(functions.readRow, "png_read_row")
                   && library.find(functions.readUpdateInfo, "png_read_update_info")
                   && library.find(functions.setIHDR, "png_set_IHDR")
                   && library.find(functions.setPLTE, "png_set_PLTE")
                   && library.find(functions.setBenignErrors, "png_set_benign_errors")
                   && library.find(functions.setMaxChunkBytes, "png_set_chunk_malloc_max")
                   && library.find(functions.setCompressionBufferSize, "png_set_compression_buffer_size")
                   && library.find(functions.setExpand, "png_set_expand")
                   && library.find(functions.setICCP, "png_set_iCCP")
                   && library.find(functions.setKeepUnknownChunks, "png_set_keep_unknown_chunks")
                   && library.find(functions.setLongJump, "png_set_longjmp_fn")
                   && library.find(functions.setPHYs, "png_set_pHYs")
                   && library.find(functions.setReadFn, "png_set_read_fn")
                   && library.find(functions.setSwap, "png_set_swap")
                   && library.find(functions.setTRNS, "png_set_tRNS")
                   && library.find(functions.setUserLimits, "png_set_user_limits")
                   && library.find(functions.setWriteFn, "png_set_write_fn")
                   && library.find(functions.writeInfo, "png_write_info");
        });
}

const Result<Functions>& installedFunctions() {
    static const Result<Functions> functions = loadFunctions({systemLibrary(OnDemand::png).file});
    return functions;
}

void jumpOnError(png_structp png, png_const_charp text) {
    auto& message = *static_cast<Message*>(libpng().getErrorPtr(png));
    std::strncpy(message.text, text, sizeof message.text - 1);
    libpng().longJump(png, 1);
    __builtin_unreachable(); // the type of a pointer cannot say that the function never returns
}

void keepWarning(png_structp png, png_const_charp text) {
    auto& message = *static_cast<Message*>(libpng().getErrorPtr(png));
    const std::string_view warning = text, chunk = warning.substr(0, 4);
    // Bits above the depth of the samples do not count, as the format says.
    if (chunk == "tRNS" && warning.find("out-of-range samples") == std::string_view::npos)
        message.lacksTransparency = true;
    if (chunk == "cHRM" || chunk == "gAMA" || chunk == "sRGB")
        message.lacksColors = true;
}

} // namespace kestrine::png

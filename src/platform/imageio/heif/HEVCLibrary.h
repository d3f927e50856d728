// The functions of libde265, which is opened when the first HEIC file is read. Its header is used for types
// only; the program does not link to the library.
#pragma once

#include "platform/host/Result.h"

#include <initializer_list>
#include <libde265/de265.h>

namespace kestrine::heif {

struct HEVCFunctions {
    decltype(&de265_init) prepare;
    decltype(&de265_new_decoder) create;
    decltype(&de265_free_decoder) destroy;
    decltype(&de265_start_worker_threads) startThreads;
    decltype(&de265_set_parameter_bool) setFlag;
    decltype(&de265_set_image_allocation_functions) setAllocation;
    decltype(&de265_set_image_plane) setPlane;
    decltype(&de265_get_image_plane_user_data) planeData;
    decltype(&de265_push_NAL) push;
    decltype(&de265_flush_data) endOfData;
    decltype(&de265_decode) decode;
    decltype(&de265_get_next_picture) nextPicture;
    decltype(&de265_get_image_width) width;
    decltype(&de265_get_image_height) height;
    decltype(&de265_get_chroma_format) chroma;
    decltype(&de265_get_bits_per_pixel) bits;
    decltype(&de265_get_image_plane) plane;
    decltype(&de265_get_image_full_range_flag) isFullRange;
    decltype(&de265_get_image_colour_primaries) primaries;
    decltype(&de265_get_image_transfer_characteristics) transfer;
    decltype(&de265_get_image_matrix_coefficients) matrix;
};

/// The functions of the first library of the list that exists. Fails with reason "unsupported" and names the
/// package if it is missing.
Result<HEVCFunctions> loadHEVCFunctions(std::initializer_list<const char*> names);

/// The functions of the installed library; opened once. Any thread.
const Result<HEVCFunctions>& hevcFunctions();

} // namespace kestrine::heif

#include "tests/platform/imageio/jpeg/own/LibraryPlanes.h"

#include <cstdio>
#include <jpeglib.h>

namespace kestrine::testing {

namespace {

/// Reads the next row of MCUs and appends it to the planes.
void readBand(jpeg_decompress_struct& info, std::vector<LibraryPlane>& planes) {
    std::vector<std::vector<JSAMPROW>> rows(planes.size());
    std::vector<JSAMPARRAY> arrays;
    for (std::size_t c = 0; c < planes.size(); ++c) {
        const jpeg_component_info& component = info.comp_info[c];
        const int count = component.v_samp_factor * component.DCT_scaled_size;
        const std::size_t width =
            (component.width_in_blocks + 8) * static_cast<unsigned>(component.DCT_scaled_size);
        const std::size_t first = planes[c].rows.size();
        planes[c].rows.resize(first + static_cast<std::size_t>(count), Bytes(width));
        for (std::size_t i = first; i < planes[c].rows.size(); ++i)
            rows[c].push_back(planes[c].rows[i].data());
        arrays.push_back(rows[c].data());
    }
    jpeg_read_raw_data(&info, arrays.data(),
                       static_cast<JDIMENSION>(info.max_v_samp_factor * info.min_DCT_scaled_size));
}

} // namespace

std::vector<LibraryPlane> libraryPlanes(const Bytes& file, int eighths) {
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, file.data(), file.size());
    jpeg_read_header(&info, TRUE);
    info.scale_num = static_cast<unsigned>(eighths);
    info.scale_denom = 8;
    info.raw_data_out = TRUE;
    jpeg_start_decompress(&info);
    std::vector<LibraryPlane> planes(static_cast<std::size_t>(info.num_components));
    for (std::size_t c = 0; c < planes.size(); ++c)
        planes[c] = {info.comp_info[c].downsampled_width, info.comp_info[c].downsampled_height, {}};
    while (info.output_scanline < info.output_height)
        readBand(info, planes);
    jpeg_destroy_decompress(&info);
    return planes;
}

} // namespace kestrine::testing

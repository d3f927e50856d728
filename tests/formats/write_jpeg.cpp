// Writes a JPEG file of the kinds that the other programs of the tests do not write. Reads 8-bit samples from
// standard input and writes the file to standard output.
//   kestrine_write_jpeg WIDTH HEIGHT STORED-SPACE FACTORS [arithmetic] [progressive] [restarts]
// The stored space is grey, rgb, ycc, cmyk or ycck; the samples are grey, RGB or CMYK to suit it. FACTORS has
// two digits per component, such as 221111.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <jpeglib.h> // after <cstdio>, which it needs

namespace {

struct Space {
    const char* name;
    J_COLOR_SPACE input, stored;
    int components;
};
constexpr std::array<Space, 5> spaces = {{{"grey", JCS_GRAYSCALE, JCS_GRAYSCALE, 1},
                                          {"rgb", JCS_RGB, JCS_RGB, 3},
                                          {"ycc", JCS_RGB, JCS_YCbCr, 3},
                                          {"cmyk", JCS_CMYK, JCS_CMYK, 4},
                                          {"ycck", JCS_CMYK, JCS_YCCK, 4}}};

void setOptions(jpeg_compress_struct& info, const char* factors, const std::vector<std::string>& options) {
    jpeg_set_quality(&info, 90, TRUE);
    for (int i = 0; i < info.num_components && std::strlen(factors) >= 2u * static_cast<unsigned>(i) + 2;
         ++i) {
        info.comp_info[i].h_samp_factor = factors[2 * i] - '0';
        info.comp_info[i].v_samp_factor = factors[2 * i + 1] - '0';
    }
    for (const std::string& option : options) {
        if (option == "arithmetic")
            info.arith_code = TRUE;
        else if (option == "progressive")
            jpeg_simple_progression(&info);
        else if (option == "restarts")
            info.restart_interval = 3;
    }
}

void write(int width, int height, const Space& space, const char* factors,
           const std::vector<std::string>& options) {
    jpeg_compress_struct info;
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    jpeg_stdio_dest(&info, stdout);
    info.image_width = static_cast<JDIMENSION>(width);
    info.image_height = static_cast<JDIMENSION>(height);
    info.input_components = space.components;
    info.in_color_space = space.input;
    jpeg_set_defaults(&info);
    jpeg_set_colorspace(&info, space.stored);
    setOptions(info, factors, options);
    jpeg_start_compress(&info, TRUE);
    std::vector<JSAMPLE> row(static_cast<std::size_t>(width) * static_cast<std::size_t>(space.components));
    for (int y = 0; y < height; ++y) {
        if (std::fread(row.data(), 1, row.size(), stdin) != row.size())
            std::exit(1);
        JSAMPROW rows = row.data();
        jpeg_write_scanlines(&info, &rows, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
}

} // namespace

int main(int count, char** arguments) {
    if (count < 5)
        return 2;
    for (const Space& space : spaces)
        if (std::strcmp(space.name, arguments[3]) == 0) {
            write(std::atoi(arguments[1]), std::atoi(arguments[2]), space, arguments[4],
                  std::vector<std::string>(arguments + 5, arguments + count));
            return 0;
        }
    return 2;
}

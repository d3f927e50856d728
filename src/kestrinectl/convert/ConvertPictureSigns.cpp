#include "kestrinectl/convert/ConvertPictureSigns.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string_view>

namespace kestrine {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view extensions[] = {
    // formats that are read, so that a damaged or empty file does not go unnoticed
    "jpg", "jpeg", "jpe", "jfif", "png", "tif", "tiff", "gif", "bmp", "dib", "pbm", "pgm", "ppm", "pnm",
    "webp", "heic", "heif", "heics", "heifs", "hif", "avif", "avifs", "jxl", "jp2", "j2k", "j2c", "jpc",
    "jpf", "jpx", "psd", "psb", "tga", "icb", "vda", "ico", "cur", "icns", "pcx", "dcx", "qoi", "sgi", "svg",
    "svgz",
    // camera raw
    "dng", "3fr", "arw", "cr2", "cr3", "crw", "dcr", "erf", "fff", "iiq", "k25", "kdc", "mef", "mos", "mrw",
    "nef", "nrw", "orf", "pef", "raf", "rw2", "rwl", "sr2", "srf", "srw", "x3f",
    // others
    "xcf", "exr", "hdr", "dds", "jxr"};

struct Sign {
    std::size_t offset;
    std::string_view bytes;
};
constexpr Sign signs[] = {{0, "gimp xcf"sv},
                          {0, "\x76\x2f\x31\x01"sv}, // layers, OpenEXR
                          {0, "DDS |"sv},
                          {0, "#?RADIANCE"sv},
                          {0, "II\xbc\x01"sv}};

bool isAt(const Sign& sign, std::string_view head) {
    return head.size() >= sign.offset && head.substr(sign.offset).starts_with(sign.bytes);
}

} // namespace

bool isCompressedFile(ByteView head) { return head.size() >= 2 && head[0] == 0x1f && head[1] == 0x8b; }

bool hasNameOfPicture(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().native();
    extension.erase(0, 1);
    std::ranges::transform(extension, extension.begin(), [](unsigned char c) { return std::tolower(c); });
    return std::ranges::find(extensions, extension) != std::end(extensions);
}

bool isForeignPicture(ByteView head) {
    const std::string_view text(reinterpret_cast<const char*>(head.data()), head.size());
    return std::ranges::any_of(signs, [&](const Sign& sign) { return isAt(sign, text); });
}

} // namespace kestrine

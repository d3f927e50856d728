#include "platform/imageio/png/Library.h"

#include <cstring>
#include <string_view>

namespace kestrine::png {

void jumpOnError(png_structp png, png_const_charp text) {
    auto& message = *static_cast<Message*>(png_get_error_ptr(png));
    std::strncpy(message.text, text, sizeof message.text - 1);
    png_longjmp(png, 1);
}

void keepWarning(png_structp png, png_const_charp text) {
    auto& message = *static_cast<Message*>(png_get_error_ptr(png));
    const std::string_view chunk = std::string_view(text).substr(0, 4);
    if (chunk == "tRNS")
        message.lacksTransparency = true;
    if (chunk == "cHRM" || chunk == "gAMA" || chunk == "sRGB")
        message.lacksColors = true;
}

} // namespace kestrine::png

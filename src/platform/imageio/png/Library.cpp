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
    if (std::string_view(text).starts_with("tRNS"))
        static_cast<Message*>(png_get_error_ptr(png))->lacksTransparency = true;
}

} // namespace kestrine::png

#include "platform/imageio/jpeg/Library.h"

namespace kestrine::jpeg {

namespace {

[[noreturn]] void jumpOut(j_common_ptr info) {
    auto* errors = reinterpret_cast<Errors*>(info->err);
    (*info->err->format_message)(info, errors->text);
    std::longjmp(errors->onError, 1);
}

void ignoreMessage(j_common_ptr) {}
void ignoreWarning(j_common_ptr, int) {}

} // namespace

jpeg_error_mgr* Errors::prepare() {
    jpeg_std_error(&manager);
    manager.error_exit = jumpOut;
    manager.emit_message = ignoreWarning;
    manager.output_message = ignoreMessage;
    text[0] = '\0';
    return &manager;
}

Failure Errors::failure() const { return {Reason::malformed, std::string("JPEG: ") + text}; }

} // namespace kestrine::jpeg

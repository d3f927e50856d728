#include "platform/imageio/jpeg/Library.h"

#include <cstring>

namespace kestrine::jpeg {

namespace {

[[noreturn]] void jumpOut(j_common_ptr info) {
    auto* errors = reinterpret_cast<Errors*>(info->err);
    (*info->err->format_message)(info, errors->text);
    std::longjmp(errors->onError, 1);
}

void ignoreMessage(j_common_ptr) {}

/// Whether the library invented pixels: the bits of the scan ended early, were invalid, or did not match the
/// restart markers.
bool reportsMadeUpPixels(const jpeg_error_mgr& warning) {
    switch (warning.msg_code) {
    case JWRN_HIT_MARKER:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_ARITH_BAD_CODE:
    case JWRN_BOGUS_PROGRESSION:
    case JWRN_MUST_RESYNC:
        return true;
    case JWRN_EXTRANEOUS_DATA: // the second number is the marker before which bits were left
        return warning.msg_parm.i[1] >= JPEG_RST0 && warning.msg_parm.i[1] < JPEG_RST0 + 8;
    default:
        return false;
    }
}

void keepDamage(j_common_ptr info, int level) {
    auto* errors = reinterpret_cast<Errors*>(info->err);
    if (level < 0 && errors->damage[0] == '\0' && reportsMadeUpPixels(errors->manager))
        (*info->err->format_message)(info, errors->damage);
}

} // namespace

void failInLibrary(j_common_ptr info, const char* text) {
    auto* errors = reinterpret_cast<Errors*>(info->err);
    std::strncpy(errors->text, text, sizeof errors->text - 1);
    std::longjmp(errors->onError, 1);
}

jpeg_error_mgr* Errors::prepare() {
    jpeg_std_error(&manager);
    manager.error_exit = jumpOut;
    manager.emit_message = keepDamage;
    manager.output_message = ignoreMessage;
    text[0] = damage[0] = '\0';
    return &manager;
}

Failure Errors::failure() const { return {Reason::malformed, std::string("JPEG: ") + text}; }

} // namespace kestrine::jpeg

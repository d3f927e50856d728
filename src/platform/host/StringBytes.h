// bytesOf: a string as bytes.
#pragma once

#include "platform/host/Bytes.h"

#include <string_view>

namespace kestrine {

/// Borrows the string, which must outlive the view.
inline ByteView bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

} // namespace kestrine

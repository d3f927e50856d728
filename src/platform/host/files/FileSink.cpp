#include "platform/host/files/FileSink.h"

#include "platform/host/files/FileContent.h"

namespace kestrine {

Result<void> FileSink::write(ByteView bytes) {
    TRY(writeAllAt(file_, bytes, offset_));
    offset_ += bytes.size();
    return {};
}

} // namespace kestrine

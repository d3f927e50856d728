#include "platform/foundation/NSFileHandle.h"

#include "platform/host/files/PathParts.h"

#include <algorithm>

namespace kestrine {

std::unique_ptr<NSFileHandle> NSFileHandle::fileHandleForReadingAtPath(const NSString& path) {
    const std::string bytes = path.utf8();
    if (!checkPath(bytes))
        return nullptr;
    Result<std::shared_ptr<const ByteReader>> reader = readerOfPath(bytes);
    return reader ? std::unique_ptr<NSFileHandle>(new NSFileHandle(std::move(*reader))) : nullptr;
}

Bytes NSFileHandle::readDataOfLength(std::size_t length) {
    if (reader_ == nullptr || offset_ >= reader_->size())
        return {};
    Bytes data(static_cast<std::size_t>(std::min<std::uint64_t>(length, reader_->size() - offset_)));
    data.resize(reader_->readAt(offset_, data));
    offset_ += data.size();
    return data;
}

} // namespace kestrine

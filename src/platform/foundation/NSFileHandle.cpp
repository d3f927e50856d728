#include "platform/foundation/NSFileHandle.h"

#include "platform/host/FailureCollector.h"
#include "platform/host/files/PathParts.h"

#include <algorithm>

namespace kestrine {

namespace {

Result<std::shared_ptr<const ByteReader>> readerOfCheckedPath(const std::string& path) {
    TRY(checkPath(path));
    return readerOfPath(path);
}

} // namespace

std::unique_ptr<NSFileHandle> NSFileHandle::fileHandleForReadingAtPath(const NSString& path) {
    Result<std::shared_ptr<const ByteReader>> reader = readerOfCheckedPath(path.utf8());
    if (reader)
        return std::unique_ptr<NSFileHandle>(new NSFileHandle(std::move(*reader)));
    noteFailure(reader.failure());
    return nullptr;
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

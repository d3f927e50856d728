#include "platform/imageio/jpeg/own/MarkerReader.h"

#include <cstring>

namespace kestrine::jpeg {

namespace {

constexpr std::size_t bytesAtOnce = 32 * 1024;

} // namespace

MarkerReader::MarkerReader(const ByteReader& file, std::uint64_t offset)
    : file_(file), offset_(offset), bytes_(bytesAtOnce) {}

int MarkerReader::passScan() {
    while (findFF()) {
        ++next_;
        const int code = codeAfterFF();
        const bool isRestart = code >= 0xD0 && code <= 0xD7;
        if (code == endOfFile)
            return none;
        if (code != 0 && !isRestart)
            return code;
    }
    return none;
}

int MarkerReader::nextMarker() {
    if (nextByte() != 0xFF)
        return none;
    const int code = codeAfterFF();
    return code == endOfFile ? none : code;
}

std::optional<Bytes> MarkerReader::segment() {
    const int high = nextByte(), low = nextByte();
    const int length = high << 8 | low;
    if (high == endOfFile || low == endOfFile || length < 2)
        return std::nullopt;
    Bytes content(static_cast<std::size_t>(length - 2));
    for (std::uint8_t& byte : content) {
        const int next = nextByte();
        if (next == endOfFile)
            return std::nullopt;
        byte = static_cast<std::uint8_t>(next);
    }
    return content;
}

/// What follows an FF; further FFs are padding.
int MarkerReader::codeAfterFF() {
    int code = nextByte();
    while (code == 0xFF)
        code = nextByte();
    return code;
}

int MarkerReader::nextByte() { return next_ != count_ || fill() ? bytes_[next_++] : endOfFile; }

/// Goes to the next FF. Returns false when there is none.
bool MarkerReader::findFF() {
    while (next_ != count_ || fill()) {
        const std::uint8_t* const start = bytes_.data() + next_;
        if (const void* const found = std::memchr(start, 0xFF, count_ - next_)) {
            next_ += static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - start);
            return true;
        }
        next_ = count_;
    }
    return false;
}

/// Reads the next piece of the file. Returns false at its end.
bool MarkerReader::fill() {
    count_ = file_.readAt(offset_, bytes_);
    offset_ += count_;
    next_ = 0;
    return count_ != 0;
}

} // namespace kestrine::jpeg

#include "platform/imageio/raw/Stream.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>

// The base class stays in the library, which is not linked. This is its only function that its header does
// not define; it is never called.
int LibRaw_abstract_datastream::jpeg_src(void*) { return -1; }

namespace kestrine::raw {

namespace {

constexpr std::size_t windowBytes = 1 << 16;

} // namespace

Stream::Stream(const Functions& library, std::shared_ptr<const ByteReader> reader)
    : library_(library), reader_(std::move(reader)), window_(windowBytes) {}

int Stream::read(void* into, size_t size, size_t count) {
    if (size == 0 || count > windowBytes * windowBytes / size)
        return 0;
    const std::span<std::uint8_t> bytes(static_cast<std::uint8_t*>(into), size * count);
    const std::size_t got = reader_->readAt(position_, bytes);
    position_ += got;
    return static_cast<int>((got + size - 1) / size); // a part of the last item counts
}

int Stream::seek(INT64 offset, int whence) {
    const auto end = static_cast<INT64>(reader_->size());
    const INT64 base = whence == SEEK_CUR ? tell() : whence == SEEK_END ? end : 0;
    position_ = static_cast<std::uint64_t>(offset < -base ? 0 : std::min(offset, end - base) + base);
    return 0;
}

int Stream::get_char() {
    if (position_ < windowBegin_ || position_ - windowBegin_ >= windowLength_) {
        windowBegin_ = position_;
        windowLength_ = reader_->readAt(position_, window_);
        if (windowLength_ == 0)
            return endOfFile;
    }
    return window_[static_cast<std::size_t>(position_++ - windowBegin_)];
}

char* Stream::gets(char* into, int room) {
    int length = 0;
    while (length + 1 < room) {
        const int next = get_char();
        if (next == endOfFile)
            break;
        into[length++] = static_cast<char>(next);
        if (next == '\n')
            break;
    }
    if (length == 0 || room < 1)
        return nullptr;
    into[length] = '\0';
    return into;
}

int Stream::scanf_one(const char* format, void* value) {
    int next = get_char();
    while (next != endOfFile && std::isspace(next) != 0)
        next = get_char();
    std::array<char, 32> word{}; // ends with a zero
    for (std::size_t i = 0; i + 1 < word.size() && next != endOfFile && std::isspace(next) == 0; ++i) {
        word[i] = static_cast<char>(next);
        next = get_char();
    }
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    return std::sscanf(word.data(), format, value);
#pragma GCC diagnostic pop
}

} // namespace kestrine::raw

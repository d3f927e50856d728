// Stream: a file as LibRaw reads it.
#pragma once

#include "platform/host/files/ByteReader.h"
#include "platform/imageio/raw/Library.h"

namespace kestrine::raw {

/// One thread at a time.
class Stream final : public LibRaw_abstract_datastream {
public:
    Stream(const Functions& library, std::shared_ptr<const ByteReader> reader);

    int valid() override { return 1; }
    int read(void* into, size_t size, size_t count) override;
    int seek(INT64 offset, int whence) override;
    INT64 tell() override { return static_cast<INT64>(position_); }
    INT64 size() override { return static_cast<INT64>(reader_->size()); }
    int get_char() override;
    char* gets(char* into, int room) override;
    int scanf_one(const char* format, void* value) override;
    int eof() override { return position_ >= reader_->size(); }
#if !LIBRAW_COMPILE_CHECK_VERSION_NOTLESS(0, 21)
    void* make_jas_stream() override { return nullptr; }
#endif
    int jpeg_src(void* jpeg) override { return library_.attachJPEGSource(this, jpeg); }

private:
    static constexpr int endOfFile = -1;

    const Functions& library_;
    const std::shared_ptr<const ByteReader> reader_;
    std::uint64_t position_ = 0;
    Bytes window_; ///< a piece of the file
    std::uint64_t windowBegin_ = 0;
    std::size_t windowLength_ = 0;
};

} // namespace kestrine::raw

// The functions of zlib, which compressed drawings need. Its header is used for types only; the
// program does not link to the library.
#pragma once

#include "platform/host/Result.h"

#include <initializer_list>
#include <zlib.h>

namespace kestrine::svg {

/// The functions that are used.
struct Zlib {
    decltype(&inflateInit2_) startInflate;
    decltype(&::inflate) inflate;
    decltype(&::inflateEnd) endInflate;
};

/// The functions of the first of these libraries that exists. Fails with reason "unsupported" and names the
/// package if there is none.
Result<Zlib> loadZlib(std::initializer_list<const char*> names);

/// The functions of the installed library; opened once. Any thread.
const Result<Zlib>& installedZlib();

/// A stream to inflate; not ready if the library is missing or there is not enough memory.
class InflateStream {
public:
    /// `windowBits` as zlib's inflateInit2() takes it.
    explicit InflateStream(int windowBits);
    ~InflateStream();
    InflateStream(const InflateStream&) = delete;
    InflateStream& operator=(const InflateStream&) = delete;

    bool isReady() const { return isReady_; }
    /// Calls zlib's inflate(). The stream must be ready.
    int inflate(int flush);

    z_stream* operator->() { return &stream_; }

private:
    z_stream stream_{};
    bool isReady_ = false;
};

} // namespace kestrine::svg

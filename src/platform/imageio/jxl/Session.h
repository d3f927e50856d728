// Session: one pass of libjxl through a file, which is read piece by piece.
#pragma once

#include "platform/host/files/ByteReader.h"
#include "platform/imageio/jxl/Library.h"

namespace kestrine::jxl {

class Session {
public:
    /// Begins a pass that stops at `events`, a sum of JXL_DEC_... values.
    static Result<Session> begin(const Functions& library, std::shared_ptr<const ByteReader> reader,
                                 int events);

    /// Lets the library use several threads. Must be called before the first advance().
    void useThreads(std::size_t count);

    /// Continues to the next event and returns it; JXL_DEC_SUCCESS at the end. Fails with malformed if the
    /// file is damaged, and with truncated if it ends too early.
    Result<JxlDecoderStatus> advance();

    JxlDecoder* decoder() const { return decoder_.get(); }

private:
    Session(const Functions& library, std::shared_ptr<const ByteReader> reader)
        : library_(&library), reader_(std::move(reader)), runner_(nullptr, library.destroyRunner),
          decoder_(library.create(nullptr), library.destroy) {}

    /// Gives the library the bytes that it has not used yet and the next ones. Returns whether there are
    /// more.
    bool feed();

    const Functions* library_;
    std::shared_ptr<const ByteReader> reader_;
    std::uint64_t offset_ = 0; ///< in the file, of the bytes after `input_`
    Bytes input_;
    std::unique_ptr<void, decltype(&JxlThreadParallelRunnerDestroy)> runner_; ///< outlives the decoder
    std::unique_ptr<JxlDecoder, decltype(&JxlDecoderDestroy)> decoder_;
};

} // namespace kestrine::jxl

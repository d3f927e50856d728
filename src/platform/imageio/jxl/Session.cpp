#include "platform/imageio/jxl/Session.h"

namespace kestrine::jxl {

namespace {

/// The header of nearly every file is within the first piece.
constexpr std::size_t firstPiece = 1 << 12, laterPiece = 1 << 20;

} // namespace

Result<Session> Session::begin(const Functions& library, std::shared_ptr<const ByteReader> reader,
                               int events) {
    Session session(library, std::move(reader));
    if (session.decoder_ == nullptr || library.subscribe(session.decoder(), events) != JXL_DEC_SUCCESS)
        return Failure{Reason::tooLarge, "there is not enough memory for the JPEG XL picture"};
    return session;
}

void Session::useThreads(std::size_t count) {
    if (count < 2)
        return;
    runner_.reset(library_->createRunner(nullptr, count));
    if (runner_ != nullptr)
        library_->setRunner(decoder(), library_->run, runner_.get());
}

Result<JxlDecoderStatus> Session::advance() {
    for (;;) {
        const JxlDecoderStatus status = library_->process(decoder());
        if (status == JXL_DEC_ERROR)
            return Failure{Reason::malformed, "the JPEG XL file is damaged"};
        if (status != JXL_DEC_NEED_MORE_INPUT)
            return status;
        if (!feed())
            return Failure{Reason::truncated, "the JPEG XL file ends too early"};
    }
}

bool Session::feed() {
    const std::size_t unused = library_->releaseInput(decoder());
    input_.erase(input_.begin(), input_.end() - static_cast<std::ptrdiff_t>(unused));
    const std::size_t piece = offset_ == 0 ? firstPiece : laterPiece;
    input_.resize(unused + piece);
    const std::size_t count = reader_->readAt(offset_, std::span(input_).subspan(unused));
    input_.resize(unused + count);
    if (count == 0)
        return false;
    offset_ += count;
    library_->setInput(decoder(), input_.data(), input_.size());
    return true; // the end is not announced, because the library would print a message about truncated files
}

} // namespace kestrine::jxl

#include "tests/platform/imageio/jpeg/own/BothDecoders.h"

#include "platform/imageio/jpeg/own/OwnRows.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

using jpeg::DecoderChoice;

Result<PixelBuffer> decoded(const Bytes& file, DecoderChoice choice, int halvings) {
    const std::unique_ptr<ImageDecoder> decoder = TRY(jpeg::openDecoder(readerOfBytes(file), choice));
    const RowSourcePointer rows = TRY(decoder->rows(0, halvings));
    return readAllRows(*rows);
}

Result<jpeg::FrameHeader> ownHeader(std::shared_ptr<const ByteReader> reader) {
    jpeg::LibraryReader file(std::move(reader));
    TRY(file.readHeader());
    return jpeg::frameHeaderOf(file);
}

Result<RowSourcePointer> ownRows(std::shared_ptr<const ByteReader> reader, int eighths) {
    const jpeg::FrameHeader header = TRY(ownHeader(reader));
    return jpeg::openOwnRows(std::move(reader), header, eighths);
}

::testing::AssertionResult sameWithBoth(const Bytes& file, int halvings) {
    const Result<PixelBuffer> ours = decoded(file, DecoderChoice::ownFirst, halvings);
    const Result<PixelBuffer> theirs = decoded(file, DecoderChoice::libraryOnly, halvings);
    if (ours.ok() != theirs.ok())
        return ::testing::AssertionFailure() << "only " << (ours ? "ours" : "the library's") << " succeeds";
    if (!ours)
        return ::testing::AssertionSuccess() << "both fail";
    return samePicture(*ours, *theirs);
}

namespace {

/// The reported damage; empty if there is none or the file cannot be decoded.
std::string damageWith(const Bytes& file, DecoderChoice choice, int halvings) {
    const auto decoder = jpeg::openDecoder(readerOfBytes(file), choice);
    const auto rows = decoder ? (*decoder)->rows(0, halvings) : Result<RowSourcePointer>(decoder.failure());
    if (!rows || !readAllRows(**rows))
        return "";
    const std::optional<Failure> damage = (*decoder)->damage();
    return damage ? damage->text : "";
}

} // namespace

::testing::AssertionResult sameDamageWithBoth(const Bytes& file, int halvings) {
    const std::string ours = damageWith(file, DecoderChoice::ownFirst, halvings);
    const std::string theirs = damageWith(file, DecoderChoice::libraryOnly, halvings);
    if (ours == theirs)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "ours: " << ours << ", the library's: " << theirs;
}

Outcome outcomeOf(const Bytes& file) {
    const Result<RowSourcePointer> rows = ownRows(readerOfBytes(file), 8);
    if (!rows)
        return Outcome::refused;
    return readAllRows(**rows).ok() ? Outcome::decoded : Outcome::failed;
}

} // namespace kestrine::testing

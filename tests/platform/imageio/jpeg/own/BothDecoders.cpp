#include "tests/platform/imageio/jpeg/own/BothDecoders.h"

#include "platform/imageio/Codecs.h"
#include "platform/imageio/jpeg/LibraryOnlyScope.h"
#include "platform/imageio/jpeg/own/BaselineRows.h"
#include "tests/support/Pictures.h"

namespace kestrine::testing {

Result<PixelBuffer> decodedByCodec(const Bytes& file, int eighths) {
    const auto decoder = jpeg::codec.open(readerOfBytes(file));
    if (!decoder)
        return decoder.failure();
    const Result<RowSourcePointer> rows = (*decoder)->rows(0, eighths);
    return rows ? readAllRows(**rows) : Result<PixelBuffer>(rows.failure());
}

Result<PixelBuffer> decodedByLibrary(const Bytes& file, int eighths) {
    const jpeg::LibraryOnlyScope scope;
    return decodedByCodec(file, eighths);
}

::testing::AssertionResult sameThroughBoth(const Bytes& file, int eighths) {
    const Result<PixelBuffer> ours = decodedByCodec(file, eighths);
    const Result<PixelBuffer> theirs = decodedByLibrary(file, eighths);
    if (ours.ok() != theirs.ok())
        return ::testing::AssertionFailure() << "only " << (ours ? "ours" : "the library's") << " succeeds";
    if (!ours)
        return ::testing::AssertionSuccess() << "both fail";
    return samePicture(*ours, *theirs);
}

Outcome outcomeOf(const Bytes& file) {
    const Result<RowSourcePointer> rows = jpeg::openBaselineRows(readerOfBytes(file), 8);
    if (!rows)
        return Outcome::refused;
    return readAllRows(**rows).ok() ? Outcome::taken : Outcome::givenUp;
}

} // namespace kestrine::testing

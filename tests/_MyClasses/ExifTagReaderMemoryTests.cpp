// The exception of the reader when there is no memory for the identifier's string.
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileHandle.h"
#include "tests/_MyClasses/ExifReading.h"
#include "tests/support/FailingAllocation.h"

#include <gtest/gtest.h>
#include <optional>

namespace kestrine::testing {
namespace {

/// The exception of getFileHeader() when the allocation after `successes` others fails.
std::string raisedAfter(int successes, ExifTagReader& reader) {
    ExifFileHeader header{};
    std::optional<FailingAllocation> failing(successes);
    try {
        (void)reader.getFileHeader(&header);
    } catch (const NSException& exception) {
        failing.reset(); // the text needs memory, too
        return exception.name() + ": " + exception.reason();
    } catch (const std::bad_alloc&) {
        return "no memory";
    }
    return "nothing";
}

TEST(ExifTagReader, anIdentifierThatCannotBecomeAStringRaisesUnknown) {
    const ReadFile file(ExifContent{.ifd0 = {exifShorts(0x0112, {6})}});
    const auto handle = NSFileHandle::fileHandleForReadingAtPath(NSString::fromUTF8(file.path()));
    file->setFileHandle(handle.get());
    int successes = 0; // the first allocations are those of reading the file
    while (raisedAfter(successes, *file) == "no memory")
        ++successes;
    EXPECT_EQ(raisedAfter(successes, *file),
              "ETRUnknownException: - [ExifFileReader getFileHeader:] NSString object could not allocated.");
}

} // namespace
} // namespace kestrine::testing

// The exception of the reader when there is no memory for the identifier's string.
// The global operator new is replaced, so that one allocation can fail.
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileHandle.h"
#include "tests/_MyClasses/ExifReading.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

namespace {

constexpr int never = -1;
/// The number of allocations of this thread that succeed before one fails.
thread_local int successesBeforeFailure = never;

} // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
    if (successesBeforeFailure != never && successesBeforeFailure-- == 0)
        throw std::bad_alloc(); // and what follows succeeds again
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace kestrine::testing {
namespace {

/// The exception of getFileHeader() when the allocation after `successes` others fails.
std::string raisedAfter(int successes, ExifTagReader& reader) {
    ExifFileHeader header{};
    std::string text = "nothing";
    successesBeforeFailure = successes;
    try {
        (void)reader.getFileHeader(&header);
    } catch (const NSException& exception) {
        text = exception.name() + ": " + exception.reason();
    } catch (const std::bad_alloc&) {
        text = "no memory";
    }
    successesBeforeFailure = never;
    return text;
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

// Strings on a system without ICU. An open library stays open, so each test runs in a new process.
#include "platform/foundation/text/NSStringEncoding.h"
#include "platform/foundation/text/TextCollation.h"
#include "platform/foundation/text/UnicodeCase.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace kestrine {
namespace {

class WithoutUnicodeLibrary : public ::testing::Test {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    /// Ends this process, which from now on can open no file, with 0 if `holds` returns true.
    [[noreturn]] static void endWithResultOf(bool (*holds)()) {
        constexpr rlimit none{0, 0};
        // The sanitizer of undefined behaviour opens pipes to check objects, but only for the first of a
        // type.
        (void)decodedText(Bytes{'a'}, NSISOLatin1StringEncoding);
        ::_exit(::setrlimit(RLIMIT_NOFILE, &none) == 0 && holds() ? 0 : 1);
    }
};

TEST_F(WithoutUnicodeLibrary, theNaturalOrderIsThatOfTheCodeUnits) {
    EXPECT_EXIT(
        endWithResultOf([] { return naturalOrder(u"a10", u"a9") == -1 && naturalOrder(u"a", u"A") == 1; }),
        ::testing::ExitedWithCode(0), "");
}

TEST_F(WithoutUnicodeLibrary, onlyASCIILettersChangeTheirCase) {
    EXPECT_EXIT(endWithResultOf([] { return upperCased(u"aé") == u"Aé" && lowerCased(u"AÉ") == u"aÉ"; }),
                ::testing::ExitedWithCode(0), "");
}

TEST_F(WithoutUnicodeLibrary, onlyEncodingsWithoutTablesAreDecoded) {
    EXPECT_EXIT(endWithResultOf([] {
                    const Bytes a{'a'};
                    return decodedText(a, NSISOLatin1StringEncoding) == NSString(u"a")
                           && decodedText(a, NSMacOSRomanStringEncoding) == std::nullopt;
                }),
                ::testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace kestrine

#include "platform/host/process/DynamicLibrary.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(DynamicLibrary, theFirstExistingLibraryIsOpened) {
    Result<DynamicLibrary> library = DynamicLibrary::open({"libno-such-thing.so.1", "libm.so.6"});
    ASSERT_TRUE(library);
    const auto cosine = library->symbol<double(double)>("cos");
    ASSERT_NE(cosine, nullptr);
    EXPECT_EQ(cosine(0), 1);
}

TEST(DynamicLibrary, aMissingSymbolIsNull) {
    Result<DynamicLibrary> library = DynamicLibrary::open({"libm.so.6"});
    ASSERT_TRUE(library);
    EXPECT_EQ(library->symbol<void()>("no_such_function_in_there"), nullptr);
}

TEST(DynamicLibrary, ifNoLibraryExistsTheLoadersMessageIsReported) {
    Result<DynamicLibrary> library = DynamicLibrary::open({"libno-such-thing.so.1"});
    ASSERT_FALSE(library);
    EXPECT_EQ(library.failure().reason, Reason::unsupported);
    EXPECT_NE(library.failure().text.find("libno-such-thing.so.1"), std::string::npos);
    EXPECT_EQ(DynamicLibrary::open({}).failure().reason, Reason::unsupported);
}

} // namespace
} // namespace kestrine

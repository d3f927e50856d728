#include "platform/coregraphics/ProfileName.h"

#include "platform/coregraphics/ColorProfile.h"
#include "tests/platform/coregraphics/ProfileBuilder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::makeICC;

Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

Bytes profileWith(const Bytes& description) {
    return makeICC("RGB ", "mntr", "XYZ ", {{"desc", description}});
}

TEST(ProfileName, isTheDescriptionOfVersion2) {
    using namespace std::string_view_literals;
    EXPECT_EQ(profileName(profileWith(bytesOf("desc\0\0\0\0\0\0\0\x05Wide\0rest"sv))), "Wide");
    EXPECT_EQ(profileName(profileWith(bytesOf("desc\0\0\0\0\0\0\0\x05W\xe4"
                                              "de\0"sv))),
              "W?de");
}

TEST(ProfileName, isTheFirstLanguageOfVersion4) {
    using namespace std::string_view_literals;
    const Bytes names = bytesOf("mluc\0\0\0\0\0\0\0\x01\0\0\0\x0c"
                                "enUS\0\0\0\x06\0\0\0\x1c\0P\x30\x42\0 3"sv);
    EXPECT_EQ(profileName(profileWith(names)), "P\u3042 ");
}

TEST(ProfileName, isEmptyWhereNothingCanBeRead) {
    EXPECT_EQ(profileName({}), "");
    EXPECT_EQ(profileName(Bytes(200, 0xff)), "");
    EXPECT_EQ(profileName(makeICC("RGB ", "mntr", "XYZ ", {})), "");
    const Bytes whole = profileWith(bytesOf(std::string_view("desc\0\0\0\0\0\0\0\x05Wide\0", 17)));
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_TRUE(std::string_view("Wide").starts_with(profileName(ByteView(whole).first(size))));
}

} // namespace
} // namespace kestrine

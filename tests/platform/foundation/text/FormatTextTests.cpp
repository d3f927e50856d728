#include "platform/foundation/text/FormatText.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <vector>

namespace kestrine {
namespace {

struct FormatCase {
    std::string format;
    std::string shown;
};

void expectShown(const std::vector<FormatCase>& cases) {
    for (const FormatCase& row : cases)
        EXPECT_EQ(expandedFormatText(row.format), row.shown) << row.format;
}

TEST(FormatText, allBytesExceptThePercentSignStayUnchanged) {
    std::string all;
    for (int byte = 1; byte < 256; byte++)
        if (byte != '%')
            all += static_cast<char>(byte);
    EXPECT_EQ(expandedFormatText(all), all);
    EXPECT_EQ(expandedFormatText(""), "");
}

TEST(FormatText, theFirstZeroByteEndsTheText) {
    using namespace std::string_view_literals;
    EXPECT_EQ(expandedFormatText("ab\0cd"sv), "ab");
    EXPECT_EQ(expandedFormatText("a%\0d"sv), "a");
}

TEST(FormatText, twoPercentSignsGiveOneWithAnythingValidBetween) {
    expectShown(
        {{"a%%b", "a%b"}, {"%%%%", "%%"}, {"%5%", "%"}, {"%-05.3l%|", "%|"}, {"%*%", "%"}, {"%1$%", "%"}});
}

TEST(FormatText, namesWithAPercentSignArePrintedAltered) {
    expectShown({{"50% off.jpg", "500ff.jpg"}, {"100%.jpg", "100(nil)g"}, {"100% done", "100 0one"}});
}

TEST(FormatText, aConversionPrintsZeroInItsForm) {
    expectShown({{"%d|%i|%u|%o|%x|%X", "0|0|0|0|0|0"},
                 {"%e %E", "0.000000e+00 0.000000E+00"},
                 {"%f %F", "0.000000 0.000000"},
                 {"%g %G", "0 0"},
                 {"%Zu", "0"},
                 {"%a %A", "0x0p+0 0X0P+0"}});
}

TEST(FormatText, stringsAndPointersArePrintedAsNull) {
    expectShown({{"%s", "(null)"},
                 {"%S", "(null)"},
                 {"%ls", "(null)"},
                 {"%8s|", "  (null)|"},
                 {"%-8s|", "(null)  |"},
                 {"%.3s|", "|"},
                 {"%4.6s|", "(null)|"},
                 {"%p", "(nil)"},
                 {"%lp", "(nil)"},
                 {"%7p|", "  (nil)|"},
                 {"%-7p|", "(nil)  |"},
                 {"%.2p", "(nil)"}});
}

TEST(FormatText, charactersCountsAndErrorsPrintNothing) {
    expectShown(
        {{"a%cb", "ab"}, {"a%lcb", "ab"}, {"a%nb", "ab"}, {"a%9nb", "ab"}, {"a%hhnb", "ab"}, {"a%mb", "ab"}});
    expectShown({{"a%4cb", "a   b"}, {"a%-4cb", "a   b"}, {"a%1cb", "ab"}, {"a%3mb", "a   b"}});
}

TEST(FormatText, anArgumentForWidthOrPrecisionCountsAsZero) {
    expectShown({{"%*d", "0"},
                 {"%.*d|", "|"},
                 {"%.*f", "0"},
                 {"%*.*f", "0"},
                 {"%2$*1$d", "0"},
                 {"%*1$.*2$e", "0e+00"}});
}

TEST(FormatText, argumentNumbersAreIgnored) {
    expectShown({{"%1$d", "0"}, {"%12$5d", "    0"}, {"%3$-4dx", "0   x"}});
}

TEST(FormatText, anUnknownConversionStaysUnchanged) {
    expectShown({{"a%yb", "a%yb"},
                 {"%5-d", "%5-d"},
                 {"%hld", "%hld"},
                 {"%llld", "%llld"},
                 {"%0$d", "%0$d"},
                 {"100%\xc3\xa9", "100%\xc3\xa9"},
                 {"%k%d", "%k0"},
                 {"a%-05.2yb%%", "a%-05.2yb%"}});
}

TEST(FormatText, anIncompleteConversionAtTheEndIsRemoved) {
    expectShown({{"%", ""},
                 {"a%", "a"},
                 {"a%5", "a"},
                 {"a%-", "a"},
                 {"a%.", "a"},
                 {"a%ll", "a"},
                 {"a%1$", "a"},
                 {"a%*", "a"},
                 {"a%d%#05.3h", "a0"}});
}

TEST(FormatText, widthAndPrecisionAreLimitedTo4096) {
    EXPECT_EQ(expandedFormatText("%99999999999999999999d").size(), 4096u);
    EXPECT_EQ(expandedFormatText("%.5000d"), std::string(4096, '0'));
    EXPECT_EQ(expandedFormatText("%4097s").size(), 4096u);
}

TEST(FormatText, severalWideFieldsAreAllPrinted) {
    EXPECT_EQ(expandedFormatText("%100d%100d%100d"),
              std::string(99, ' ') + "0" + std::string(99, ' ') + "0" + std::string(99, ' ') + "0");
}

TEST(FormatText, theOutputIsLimitedForAnyNumberOfConversions) {
    std::string format;
    for (int i = 0; i < 100000; i++)
        format += "%4096.4096f";
    const std::size_t size = expandedFormatText(format).size();
    EXPECT_GT(size, 1u << 20);
    EXPECT_LT(size, 2 * format.size() + (1u << 20));
}

/// The output of the C library for `format` with a zero of type T as its only argument.
template <class T>
std::string printed(const std::string& format) {
    char text[256];
    const int length = std::snprintf(text, sizeof text, format.c_str(), T{});
    return length < 0 ? "failed" : std::string(text, static_cast<std::size_t>(length));
}

std::vector<std::string> flagSets() {
    constexpr std::string_view flags = "-+ #0'";
    std::vector<std::string> sets;
    for (unsigned mask = 0; mask < (1u << flags.size()); mask++) {
        std::string set;
        for (std::size_t i = 0; i < flags.size(); i++)
            if (mask & (1u << i))
                set += flags[i];
        sets.push_back(set);
    }
    return sets;
}

template <class T>
void expectAsPrinted(std::string_view letters, const std::vector<std::string>& lengths) {
    for (const std::string& flags : flagSets())
        for (const char* width : {"", "1", "2", "5", "9", "20"})
            for (const char* precision : {"", ".", ".0", ".1", ".2", ".7", ".17"})
                for (const std::string& length : lengths)
                    for (const char letter : letters) {
                        const std::string format = "%" + flags + width + precision + length + letter;
                        ASSERT_EQ(expandedFormatText(format), printed<T>(format)) << format;
                    }
}

TEST(FormatText, integersAgreeWithTheCLibrary) {
    expectAsPrinted<int>("diuoxX", {"", "h", "hh"});
    expectAsPrinted<long long>("diuoxX", {"l", "ll", "q", "L", "j", "z", "t"});
}

TEST(FormatText, floatingNumbersAgreeWithTheCLibrary) {
    expectAsPrinted<double>("eEfFgGaA", {"", "l"});
    expectAsPrinted<long double>("eEfFgGaA", {"L"});
}

TEST(FormatText, nullStringsAndPointersAgreeWithTheCLibrary) {
    expectAsPrinted<const char*>("s", {""});
    expectAsPrinted<const wchar_t*>("sS", {"l"});
    expectAsPrinted<const void*>("p", {""});
}

} // namespace
} // namespace kestrine

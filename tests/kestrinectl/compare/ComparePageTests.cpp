#include "kestrinectl/compare/ComparePage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::HasSubstr;
using testing::Not;

ComparedImage imageLabelled(const std::string& label) {
    return {
        .label = label, .format = &outputFormat(FileType::jpeg), .width = 30, .height = 20, .bytes = 1234567};
}

/// A section with an original and one result, both shown by a few bytes.
PageSection sectionOf(const std::string& name, const std::string& label) {
    PageSection section{.name = name};
    section.comparison.format = "JPEG";
    section.comparison.bytes = 2'000'000;
    section.comparison.images = {imageLabelled("Original"), imageLabelled(label)};
    section.comparison.images.front().isReference = true;
    for (std::size_t i = 0; i < 2; ++i)
        section.shown.push_back({.parts = {{"Whole picture", "image/jpeg", {1, 2, 3}, 30, 20}}});
    return section;
}

std::size_t countOf(const std::string& part, const std::string& text) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

TEST(ComparePage, namesAndLabelsAreEscapedEverywhere) {
    const std::string page = comparePage({sectionOf("<b>&\"'\n\xff.jpg", "Set <i>&\"': JPEG")});
    EXPECT_THAT(page, Not(HasSubstr("<b>")));
    EXPECT_THAT(page, Not(HasSubstr("<i>")));
    EXPECT_THAT(page, HasSubstr("<h2 id=\"picture-1\">&lt;b&gt;&amp;&quot;&#39;\\n\\xff.jpg</h2>"));
    EXPECT_THAT(page, HasSubstr("<option selected>Set &lt;i&gt;&amp;&quot;&#39;: JPEG</option>"));
    EXPECT_THAT(page, HasSubstr("aria-label=\"Set &lt;i&gt;&amp;&quot;&#39;: JPEG\""));
}

TEST(ComparePage, aNameCannotAddAnElement) {
    const std::string usual = comparePage({sectionOf("a.jpg", "JPEG")});
    const std::string page = comparePage({sectionOf("</title><script>x</script><img src=y>", "\"><script>")});
    for (const std::string element : {"<script", "</script", "<img", "</title", "<option"})
        EXPECT_EQ(countOf(element, page), countOf(element, usual)) << element;
}

TEST(ComparePage, picturesAreInside) {
    EXPECT_THAT(comparePage({sectionOf("a.jpg", "JPEG")}),
                HasSubstr("width=\"30\" height=\"20\" src=\"data:image/jpeg;base64,AQID\">"));
}

TEST(ComparePage, theTableHasBytesShareAndSimilarity) {
    PageSection section = sectionOf("a.jpg", "JPEG");
    section.comparison.images[1].similarity = 0.98768;
    const std::string page = comparePage({section});
    EXPECT_THAT(
        page, HasSubstr("1.2 MB <span class=\"exact\">(1,234,567 bytes)</span></td><td>62 %</td><td>0.9876"));
}

TEST(ComparePage, onlyEqualPicturesHaveASimilarityOfOne) {
    PageSection section = sectionOf("a.jpg", "JPEG");
    for (const auto& [similarity, text] : {std::pair{1.0, "SSIM 1<"},
                                           {0.99999, "SSIM 0.9999<"},
                                           {0.05, "SSIM 0.0500<"},
                                           {-0.25, "SSIM -0.2500<"}}) {
        section.comparison.images[1].similarity = similarity;
        EXPECT_THAT(comparePage({section}), HasSubstr(text));
    }
    section.comparison.images[1].similarity = std::nullopt;
    EXPECT_THAT(comparePage({section}), HasSubstr("SSIM not measured<"));
}

TEST(ComparePage, itSaysWhatIsNotShownAsItIs) {
    PageSection section = sectionOf("a.jpg", "TIFF");
    section.comparison.images[1].format = &outputFormat(FileType::tiff);
    section.shown[1].isConverted = true;
    EXPECT_THAT(comparePage({section}), HasSubstr("because browsers do not show TIFF"));
    section.longestSide = 2048;
    section.shown[0].isReduced = true;
    EXPECT_THAT(comparePage({section}), HasSubstr("shown reduced to 2048 pixels"));
}

TEST(ComparePage, theMarkupOfAnImageHasTheLengthThatIsReservedForIt) {
    const std::string longest(255, '"'); // each of these characters becomes six
    PageSection section = sectionOf(longest, longest);
    const std::size_t small = comparePage({section}).size();
    section.comparison.images.push_back(section.comparison.images.back());
    section.shown.push_back({.parts = std::vector<PagePicture>(4, section.shown.front().parts.front())});
    EXPECT_LE(comparePage({section}).size() - small, maxMarkupPerImage);
}

TEST(ComparePage, aPageWithoutPicturesHasTheLengthThatIsReservedForIt) {
    EXPECT_LE(comparePage({}).size(), maxMarkupOfPage);
}

} // namespace
} // namespace kestrine

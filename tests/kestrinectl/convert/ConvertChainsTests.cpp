#include "kestrinectl/convert/ConvertChains.h"

#include "models/ResizeSet.h"
#include "tests/support/PresetBuilder.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace kestrine {
namespace {

/// Inputs in a temporary folder and a set "Web" whose outputs go to the folder of that name beside them.
struct ConvertChains : ::testing::Test {
    testing::TemporaryFolder folder;
    ResizeSets web = {testing::makeSet(u"Web", {{u"formatType", std::int32_t{FormatTypeJPEG}}})};
    ResizeSets inPlace = {
        testing::makeSet(u"Web", {{u"formatType", std::int32_t{FormatTypeJPEG}}, {u"replaceFile", true}})};

    std::vector<ConvertChain> chains(std::initializer_list<std::string_view> names,
                                     const ResizeSets& sets) const {
        std::vector<ResizeJob> jobs;
        for (const std::string_view name : names) {
            const NSString path = NSString::fromUTF8(folder / name);
            jobs.push_back({path, std::nullopt, path.deletingLastPathComponent(), recipesOf(sets), {}});
        }
        return independentChains(jobs, 2);
    }
};

using Chains = std::vector<ConvertChain>;

TEST_F(ConvertChains, ofPicturesWithDifferentNamesHaveOnePicture) {
    EXPECT_EQ(chains({"b.jpg", "a.jpg", "a_1.jpg", "sub/a.jpg"}, web), (Chains{{0}, {1}, {2}, {3}}));
}

TEST_F(ConvertChains, keepPicturesWithTheSameResultNameTogether) {
    EXPECT_EQ(chains({"a.jpg", "b.jpg", "a.png", "a.jpg"}, web), (Chains{{0, 2, 3}, {1}}));
}

TEST_F(ConvertChains, keepANameAndThePicturesThatMayNeedItTogether) {
    EXPECT_EQ(chains({"a_1.png", "a.jpg", "a.png", "a_1_1.jpg", "a_2b.jpg"}, web),
              (Chains{{0, 1, 2, 3}, {4}}));
}

TEST_F(ConvertChains, noticeNamesThatExistOnTheDisk) {
    folder.write("Web/a.jpg", "");
    EXPECT_EQ(chains({"a_1.jpg", "a.jpg", "b_1.jpg", "b.jpg"}, web), (Chains{{0, 1}, {2}, {3}}));
}

TEST_F(ConvertChains, noticeThatAReplacedOriginalFreesItsName) {
    folder.write("a.jpg", "");
    folder.write("b.jpg", "");
    EXPECT_EQ(chains({"a.jpg", "a_1.jpg"}, inPlace), (Chains{{0}, {1}}));
    EXPECT_EQ(chains({"b.png", "b_1.jpg"}, inPlace), (Chains{{0, 1}}));
}

TEST_F(ConvertChains, followLinksToTheSameFolder) {
    std::filesystem::create_directory(folder / "real");
    std::filesystem::create_directory_symlink(folder / "real", folder / "link");
    EXPECT_EQ(chains({"real/a.jpg", "link/a.jpg"}, web), (Chains{{0, 1}}));
}

TEST_F(ConvertChains, considerTheOutputsOfEverySet) {
    const ResizeSets sets = {testing::makeSet(u"Web", {{u"formatType", std::int32_t{FormatTypePNG}}}),
                             testing::makeSet(u"Web", {{u"formatType", std::int32_t{FormatTypeGIF}}})};
    EXPECT_EQ(chains({"a.jpg", "b.jpg"}, sets), (Chains{{0}, {1}}));
    EXPECT_EQ(chains({"a.jpg", "b.jpg", "a.gif"}, sets), (Chains{{0, 2}, {1}}));
}

} // namespace
} // namespace kestrine

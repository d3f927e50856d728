#include "platform/finder/FinderMetadata.h"
#include "platform/foundation/propertylist/PropertyListText.h"
#include "platform/host/files/ExtendedAttributes.h"
#include "platform/host/process/ChildProcess.h"
#include "tests/platform/finder/AppleDoubleBuilder.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/SystemFeatures.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kestrine {
namespace {

using ::testing::AnyOf;
using testing::bytesOf;
using testing::failSystemCall;
using ::testing::IsEmpty;
using testing::macSidecar;
using testing::readFileBytes;
using testing::runAsOrdinaryUser;
using testing::runIsolated;
using testing::serverBlob;
using testing::sidecarWithComment;
using testing::TemporaryFolder;
using ::testing::UnorderedElementsAre;

constexpr const char* ownComment = "user.xdg.comment";
constexpr const char* spotlightComment = "user.com.apple.metadata:kMDItemFinderComment";
constexpr const char* serverAttribute = "user.org.netatalk.Metadata";
constexpr const char* ownInformation = "user.com.apple.FinderInfo";
constexpr const char* streamAttribute = "user.DosStream.AFP_AfpInfo:$DATA";

FinderInfo labelled(int label) {
    return {fourCharacterCode("JPEG"), 0, static_cast<std::uint16_t>(label << 1), {1, 2}, 3, {4, 5, 6}};
}

Bytes plain(const FinderInfo& information) {
    const auto bytes = bytesOf(information);
    return {bytes.begin(), bytes.end()};
}

/// What a file server leaves: 60 bytes and a zero.
Bytes stream(const FinderInfo& information) {
    Bytes bytes = bytesOf(std::string_view("AFP\0\0\0\1\0\0\0\0\0\x80\0\0\0", 16));
    const Bytes middle = plain(information);
    bytes.insert(bytes.end(), middle.begin(), middle.end());
    bytes.resize(61);
    return bytes;
}

class Metadata : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::keepsAttributes())
            GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    }

    void store(const char* attribute, ByteView value) const {
        ASSERT_TRUE(setExtendedAttribute(file_, attribute, value));
    }
    Bytes stored(const char* attribute) const {
        const Result<Bytes> value = getExtendedAttribute(file_, attribute);
        return value ? *value : bytesOf("(absent)");
    }
    std::vector<std::string> userAttributes() const {
        std::vector<std::string> names = *listExtendedAttributes(file_);
        std::erase_if(names, [](const std::string& name) { return !name.starts_with("user."); });
        return names;
    }
    void storeSidecar(ByteView content) const { folder_.write(sidecarName_, content); }
    Bytes sidecar() const { return readFileBytes(folder_ / sidecarName_); }

    const TemporaryFolder folder_;
    const std::string file_ = folder_.write("a \xFF\n:%s\".jpg", "content");
    const std::string sidecarName_ = "._a \xFF\n:%s\".jpg";
};

using FinderComment = Metadata;
using FinderInformation = Metadata;

TEST_F(FinderComment, aFileWithoutOneHasNone) {
    const Result<OptionalString> comment = finderComment(file_);
    ASSERT_TRUE(comment) << comment.failure().text;
    EXPECT_EQ(*comment, std::nullopt);
}

TEST_F(FinderComment, whatIsSetIsReadAndDesktopsSeeTheSameBytes) {
    for (const std::string text :
         {"Summer", "caf\xC3\xA9 \xF0\x9F\x8D\xB0\nsecond line", "no UTF-8: \xFF\xC3"}) {
        ASSERT_TRUE(setFinderComment(file_, NSString::fromUTF8(text)));
        EXPECT_EQ(stored(ownComment), bytesOf(text));
        EXPECT_EQ(*finderComment(file_), NSString::fromUTF8(text));
    }
}

TEST_F(FinderComment, gioShowsWhatIsSetAndSetsWhatIsRead) {
    const char* const gio = "/usr/bin/gio";
    if (::access(gio, X_OK) != 0)
        GTEST_SKIP() << gio << " is not installed (package libglib2.0-bin)";
    ASSERT_TRUE(setFinderComment(file_, u"Summer"));
    const auto shown = runCapturingOutput(gio, {"info", "-a", "xattr::xdg.comment", file_}, 10'000);
    ASSERT_TRUE(shown);
    EXPECT_THAT(shown->output, ::testing::HasSubstr("xattr::xdg.comment: Summer\n"));
    const auto set = runCapturingOutput(gio, {"set", file_, "xattr::xdg.comment", "Winter"}, 10'000);
    EXPECT_TRUE(set && set->end.code == 0);
    EXPECT_EQ(*finderComment(file_), NSString(u"Winter"));
}

TEST_F(FinderComment, onlyOurOwnPlaceIsMade) {
    ASSERT_TRUE(setFinderComment(file_, u"Summer"));
    EXPECT_THAT(userAttributes(), UnorderedElementsAre(ownComment));
    EXPECT_FALSE(std::filesystem::exists(folder_ / sidecarName_));
}

TEST_F(FinderComment, thePlacesAreAskedInTheirOrder) {
    storeSidecar(sidecarWithComment("of the sidecar", Bytes(32)));
    EXPECT_EQ(*finderComment(file_), NSString(u"of the sidecar"));
    store(serverAttribute, serverBlob("of the server", Bytes(32)));
    EXPECT_EQ(*finderComment(file_), NSString(u"of the server"));
    store(spotlightComment, propertyListOfText(u"of the Mac"));
    EXPECT_EQ(*finderComment(file_), NSString(u"of the Mac"));
    store(ownComment, bytesOf("of the desktop"));
    EXPECT_EQ(*finderComment(file_), NSString(u"of the desktop"));
}

TEST_F(FinderComment, brokenPlacesArePassedOver) {
    store(spotlightComment, bytesOf("bplist00 no property list"));
    store(serverAttribute, Bytes(402, 0xFF));
    EXPECT_EQ(*finderComment(file_), std::nullopt);
    storeSidecar(sidecarWithComment("Summer", Bytes(32)));
    EXPECT_EQ(*finderComment(file_), NSString(u"Summer"));
}

TEST_F(FinderComment, sidecarsThatCannotBeSidecarsAreAsAbsent) {
    const std::string place = folder_ / sidecarName_;
    const std::string other = folder_.write("other", sidecarWithComment("of another file", Bytes(32)));
    std::filesystem::create_symlink(other, place);
    EXPECT_EQ(*finderComment(file_), std::nullopt);
    EXPECT_TRUE(setFinderComment(file_, u"Summer"));
    EXPECT_EQ(readFileBytes(other), sidecarWithComment("of another file", Bytes(32)));
    EXPECT_TRUE(setFinderComment(file_, u""));
    std::filesystem::remove(place);
    storeSidecar(sidecarWithComment("of a giant", Bytes(32)));
    std::filesystem::resize_file(place, 100'000'000);
    EXPECT_EQ(*finderComment(file_), std::nullopt);
    EXPECT_TRUE(setFinderComment(file_, u"Summer"));
}

TEST_F(FinderComment, anEmptyOneOfTheDesktopMeansThatThereIsNone) {
    store(ownComment, {});
    store(spotlightComment, propertyListOfText(u"old"));
    EXPECT_EQ(*finderComment(file_), std::nullopt);
}

TEST_F(FinderComment, aServersRoomForOneDoesNotHideALaterComment) {
    store(serverAttribute, serverBlob("", Bytes(32)));
    storeSidecar(sidecarWithComment("Summer", Bytes(32)));
    EXPECT_EQ(*finderComment(file_), NSString(u"Summer"));
}

TEST_F(FinderComment, placesThatExistAreBroughtUpToDateAndKeepTheRest) {
    store(spotlightComment, propertyListOfText(u"old"));
    store(serverAttribute, serverBlob("", plain(labelled(2))));
    storeSidecar(sidecarWithComment("an older one", plain(labelled(3))));
    ASSERT_TRUE(setFinderComment(file_, u"caf\u00E9"));
    EXPECT_EQ(stored(ownComment), bytesOf("caf\xC3\xA9"));
    EXPECT_EQ(*textOfPropertyList(stored(spotlightComment)), NSString(u"caf\u00E9"));
    EXPECT_EQ(stored(serverAttribute), serverBlob("caf\xC3\xA9", plain(labelled(2))));
    EXPECT_EQ(sidecar(), sidecarWithComment("caf\xC3\xA9", plain(labelled(3))));
}

TEST_F(FinderComment, brokenPlacesAndSidecarsWithoutACommentAreLeftAlone) {
    const Bytes macs = macSidecar(plain(labelled(3)), "a resource fork");
    store(spotlightComment, bytesOf("no property list"));
    store(serverAttribute, Bytes(402, 0xFF));
    storeSidecar(macs);
    ASSERT_TRUE(setFinderComment(file_, u"Summer"));
    EXPECT_EQ(stored(spotlightComment), bytesOf("no property list"));
    EXPECT_EQ(stored(serverAttribute), Bytes(402, 0xFF));
    EXPECT_EQ(sidecar(), macs);
}

TEST_F(FinderComment, aLongOneIsWholeForDesktopsAndCutForServers) {
    store(serverAttribute, serverBlob("", Bytes(32)));
    const std::string text = std::string(199, 'x') + "\xC3\xA9";
    ASSERT_TRUE(setFinderComment(file_, NSString::fromUTF8(text)));
    EXPECT_EQ(*finderComment(file_), NSString::fromUTF8(text));
    EXPECT_EQ(stored(serverAttribute), serverBlob(std::string(199, 'x'), Bytes(32)));
}

TEST_F(FinderComment, anEmptyOneRemovesItEverywhereSoThatItDoesNotComeBack) {
    store(spotlightComment, propertyListOfText(u"old"));
    store(serverAttribute, serverBlob("old", Bytes(32, 7)));
    storeSidecar(sidecarWithComment("old", Bytes(32, 7)));
    store(ownComment, bytesOf("old"));
    ASSERT_TRUE(setFinderComment(file_, u""));
    EXPECT_EQ(*finderComment(file_), std::nullopt);
    EXPECT_THAT(userAttributes(), UnorderedElementsAre(serverAttribute));
    EXPECT_EQ(stored(serverAttribute), serverBlob("", Bytes(32, 7)));
    EXPECT_EQ(sidecar(), sidecarWithComment("", Bytes(32, 7)));
}

TEST_F(FinderComment, removingOneThatIsNotThereSucceedsAndAnEmptyAttributeGoesToo) {
    EXPECT_TRUE(setFinderComment(file_, u""));
    store(ownComment, {});
    EXPECT_TRUE(setFinderComment(file_, u""));
    EXPECT_THAT(userAttributes(), IsEmpty());
}

TEST_F(FinderComment, aRemovalThatFailsHalfWayLeavesTheOldCommentInPlace) {
    store(ownComment, bytesOf("current"));
    store(serverAttribute, serverBlob("older", Bytes(32)));
    for (const long call : {SYS_setxattr, SYS_removexattr})
        runIsolated([&] {
            if (!failSystemCall(call, EIO))
                GTEST_SKIP() << "this system permits no filter of system calls";
            EXPECT_EQ(setFinderComment(file_, u"").failure().reason, Reason::inputOutput);
            EXPECT_EQ(*finderComment(file_), NSString(u"current"));
        });
}

TEST_F(FinderComment, aChangeThatFailsHalfWayShowsTheNewCommentAndIsReported) {
    store(ownComment, bytesOf("old"));
    storeSidecar(sidecarWithComment("older", Bytes(32)));
    runIsolated([&] {
        if (!failSystemCall(SYS_fsync, EIO))
            GTEST_SKIP() << "this system permits no filter of system calls";
        EXPECT_EQ(setFinderComment(file_, u"new").failure().reason, Reason::inputOutput);
        EXPECT_EQ(*finderComment(file_), NSString(u"new"));
    });
    EXPECT_EQ(sidecar(), sidecarWithComment("older", Bytes(32)));
}

TEST_F(FinderComment, oneBeyondTheBoundOfTheFileSystemFailsAndChangesNothing) {
    store(ownComment, bytesOf("old"));
    store(serverAttribute, serverBlob("old", Bytes(32)));
    const Result<void> set = setFinderComment(file_, std::u16string(100'000, u'x'));
    EXPECT_THAT(set.failure().reason, AnyOf(Reason::noSpace, Reason::tooLarge));
    EXPECT_EQ(*finderComment(file_), NSString(u"old"));
    EXPECT_EQ(stored(serverAttribute), serverBlob("old", Bytes(32)));
}

TEST_F(FinderComment, foldersHaveThemAndLinksLeadToTheirTarget) {
    ASSERT_TRUE(setFinderComment(folder_.path().string(), u"of the folder"));
    EXPECT_EQ(*finderComment(folder_.path().string() + "/"), NSString(u"of the folder"));
    std::filesystem::create_symlink(file_, folder_ / "link");
    ASSERT_TRUE(setFinderComment(folder_ / "link", u"of the target"));
    EXPECT_EQ(*finderComment(file_), NSString(u"of the target"));
}

TEST_F(FinderComment, whereNothingIsItIsNotFound) {
    std::filesystem::create_symlink(folder_ / "none", folder_ / "dangling");
    for (const char* name : {"none", "dangling"}) {
        EXPECT_EQ(finderComment(folder_ / name).failure().reason, Reason::notFound) << name;
        EXPECT_EQ(setFinderComment(folder_ / name, u"x").failure().reason, Reason::notFound) << name;
        EXPECT_EQ(setFinderComment(folder_ / name, u"").failure().reason, Reason::notFound) << name;
        EXPECT_EQ(finderInformation(folder_ / name).failure().reason, Reason::notFound) << name;
        EXPECT_EQ(setFinderInformation(folder_ / name, labelled(1)).failure().reason, Reason::notFound)
            << name;
    }
    EXPECT_EQ(finderComment("").failure().reason, Reason::malformed);
    EXPECT_EQ(setFinderInformation(std::string("a\0b", 3), {}).failure().reason, Reason::malformed);
}

TEST_F(FinderComment, withoutRightsItIsNotPermitted) {
    store(ownComment, bytesOf("old"));
    ::chmod(folder_.path().c_str(), 0755);
    ::chmod(file_.c_str(), 0444);
    runAsOrdinaryUser([&] {
        EXPECT_EQ(*finderComment(file_), NSString(u"old"));
        EXPECT_EQ(setFinderComment(file_, u"new").failure().reason, Reason::notPermitted);
        EXPECT_EQ(setFinderComment(file_, u"").failure().reason, Reason::notPermitted);
        EXPECT_EQ(setFinderInformation(file_, labelled(1)).failure().reason, Reason::notPermitted);
    });
    ::chmod(file_.c_str(), 0000);
    runAsOrdinaryUser([&] { EXPECT_EQ(finderComment(file_).failure().reason, Reason::notPermitted); });
}

TEST_F(FinderComment, aPipeHasNoneAndTakesNone) {
    const std::string pipe = folder_ / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(*finderComment(pipe), std::nullopt);
    EXPECT_EQ(setFinderComment(pipe, u"x").failure().reason, Reason::notPermitted);
}

TEST_F(FinderInformation, aFileWithoutOneHasZeros) {
    const Result<FinderInfo> information = finderInformation(file_);
    ASSERT_TRUE(information) << information.failure().text;
    EXPECT_EQ(*information, FinderInfo{});
}

TEST_F(FinderInformation, whatIsSetIsReadWithItsExtendedPart) {
    ASSERT_TRUE(setFinderInformation(file_, labelled(5)));
    EXPECT_EQ(*finderInformation(file_), labelled(5));
    EXPECT_EQ(finderInformation(file_)->label(), 5);
    EXPECT_THAT(userAttributes(), UnorderedElementsAre(ownInformation));
    EXPECT_EQ(stored(ownInformation), plain(labelled(5)));
}

TEST_F(FinderInformation, thePlacesAreAskedInTheirOrder) {
    storeSidecar(macSidecar(plain(labelled(4)), "fork"));
    EXPECT_EQ(finderInformation(file_)->label(), 4);
    store(streamAttribute, stream(labelled(3)));
    EXPECT_EQ(finderInformation(file_)->label(), 3);
    store(serverAttribute, serverBlob("", plain(labelled(2))));
    EXPECT_EQ(finderInformation(file_)->label(), 2);
    store(ownInformation, plain(labelled(1)));
    EXPECT_EQ(finderInformation(file_)->label(), 1);
}

TEST_F(FinderInformation, brokenPlacesArePassedOver) {
    store(ownInformation, Bytes(31, 0xFF));
    store(serverAttribute, bytesOf("no AppleDouble"));
    store(streamAttribute, bytesOf("AFP"));
    storeSidecar(Bytes(100, 0xFF));
    EXPECT_EQ(*finderInformation(file_), FinderInfo{});
    storeSidecar(macSidecar(plain(labelled(6)), ""));
    EXPECT_EQ(*finderInformation(file_), labelled(6));
}

TEST_F(FinderInformation, placesThatExistAreBroughtUpToDateAndKeepTheRest) {
    store(serverAttribute, serverBlob("a comment", Bytes(32)));
    store(streamAttribute, stream(FinderInfo{}));
    storeSidecar(macSidecar(Bytes(32), "a resource fork"));
    ASSERT_TRUE(setFinderInformation(file_, labelled(7)));
    EXPECT_EQ(stored(serverAttribute), serverBlob("a comment", plain(labelled(7))));
    EXPECT_EQ(stored(streamAttribute), stream(labelled(7)));
    EXPECT_EQ(sidecar(), macSidecar(plain(labelled(7)), "a resource fork"));
}

TEST_F(FinderInformation, zerosRemoveItEverywhere) {
    store(ownInformation, plain(labelled(1)));
    store(serverAttribute, serverBlob("a comment", plain(labelled(2))));
    store(streamAttribute, stream(labelled(3)));
    storeSidecar(macSidecar(plain(labelled(4)), "fork"));
    ASSERT_TRUE(setFinderInformation(file_, FinderInfo{}));
    EXPECT_EQ(*finderInformation(file_), FinderInfo{});
    EXPECT_THAT(userAttributes(), UnorderedElementsAre(serverAttribute, streamAttribute));
    EXPECT_EQ(stored(serverAttribute), serverBlob("a comment", Bytes(32)));
    EXPECT_EQ(sidecar(), macSidecar(Bytes(32), "fork"));
}

TEST_F(FinderInformation, aSidecarThatIsUpToDateAlreadyIsNotWritten) {
    storeSidecar(macSidecar(plain(labelled(4)), "fork"));
    struct stat before {
    }, after{};
    ASSERT_EQ(::stat((folder_ / sidecarName_).c_str(), &before), 0);
    ASSERT_TRUE(setFinderInformation(file_, labelled(4)));
    ASSERT_EQ(::stat((folder_ / sidecarName_).c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
}

/// Lets the process see a file system without attributes.
bool hideAttributes() {
    return failSystemCall(SYS_getxattr, EOPNOTSUPP) && failSystemCall(SYS_setxattr, EOPNOTSUPP)
           && failSystemCall(SYS_flistxattr, EOPNOTSUPP);
}

TEST(MetadataWithoutAttributes, withoutASidecarAllIsUnsupported) {
    const TemporaryFolder folder;
    const std::string file = folder.write("a.jpg", "");
    runIsolated([&] {
        if (!hideAttributes())
            GTEST_SKIP() << "this system permits no filter of system calls";
        EXPECT_EQ(finderComment(file).failure().reason, Reason::unsupported);
        EXPECT_EQ(setFinderComment(file, u"x").failure().reason, Reason::unsupported);
        EXPECT_EQ(setFinderComment(file, u"").failure().reason, Reason::unsupported);
        EXPECT_EQ(finderInformation(file).failure().reason, Reason::unsupported);
        EXPECT_EQ(setFinderInformation(file, labelled(1)).failure().reason, Reason::unsupported);
    });
}

TEST(MetadataWithoutAttributes, aSidecarIsReadAndKeepsWhatIsSet) {
    const TemporaryFolder folder;
    const std::string file = folder.write("a.jpg", "");
    folder.write("._a.jpg", sidecarWithComment("old", plain(labelled(1))));
    runIsolated([&] {
        if (!hideAttributes())
            GTEST_SKIP() << "this system permits no filter of system calls";
        EXPECT_EQ(*finderComment(file), NSString(u"old"));
        EXPECT_EQ(*finderInformation(file), labelled(1));
        EXPECT_TRUE(setFinderComment(file, u"new"));
        EXPECT_TRUE(setFinderInformation(file, labelled(2)));
        EXPECT_EQ(*finderComment(file), NSString(u"new"));
        EXPECT_EQ(*finderInformation(file), labelled(2));
        EXPECT_TRUE(setFinderComment(file, u""));
        EXPECT_TRUE(setFinderInformation(file, FinderInfo{}));
    });
    EXPECT_EQ(readFileBytes(folder / "._a.jpg"), sidecarWithComment("", Bytes(32)));
}

TEST(MetadataWithoutAttributes, aCommentThatTheSidecarCannotHoldWholeIsUnsupportedAndChangesNothing) {
    const TemporaryFolder folder;
    const std::string file = folder.write("a.jpg", "");
    folder.write("._a.jpg", sidecarWithComment("old", Bytes(32)));
    runIsolated([&] {
        if (!hideAttributes())
            GTEST_SKIP() << "this system permits no filter of system calls";
        EXPECT_EQ(setFinderComment(file, std::u16string(300, u'x')).failure().reason, Reason::unsupported);
    });
    EXPECT_EQ(readFileBytes(folder / "._a.jpg"), sidecarWithComment("old", Bytes(32)));
}

} // namespace
} // namespace kestrine

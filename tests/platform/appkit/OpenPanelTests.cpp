#include "platform/appkit/DesktopDialog.h"
#include "platform/appkit/NSOpenPanel.h"
#include "tests/platform/appkit/FakeDesktop.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::FakeDesktop;
using testing::FakePortal;
using testing::ScopedVariable;
using Runs = FakeDesktop::Runs;

constexpr const char* folderURI = "file:///home/anna/Pictures";

/// A panel as the presets use it: one folder.
std::unique_ptr<NSOpenPanel> folderPanel(const NSString& message = u"Choose") {
    std::unique_ptr<NSOpenPanel> panel = NSOpenPanel::openPanel();
    panel->canChooseFiles = false;
    panel->canChooseDirectories = true;
    panel->canCreateDirectories = true;
    panel->message = message;
    return panel;
}

/// What a folder panel ends with: the path after OK, "cancel" otherwise.
std::string chosenFolder(const NSString& message = u"Choose") {
    const std::unique_ptr<NSOpenPanel> panel = folderPanel(message);
    return panel->runModal() == NSOKButton ? panel->filename().utf8() : "cancel";
}

class InjectedPanel final : public NSOpenPanel {
public:
    int runModal() override { return NSOKButton; }
    NSString filename() const override { return u"/injected"; }
};

TEST(OpenPanel, isTheFactorysWhileOneIsSet) {
    NSOpenPanel::setFactory(
        []() -> std::unique_ptr<NSOpenPanel> { return std::make_unique<InjectedPanel>(); });
    const auto injected = NSOpenPanel::openPanel();
    NSOpenPanel::setFactory(nullptr);
    EXPECT_NE(dynamic_cast<InjectedPanel*>(injected.get()), nullptr);
    EXPECT_EQ(dynamic_cast<InjectedPanel*>(NSOpenPanel::openPanel().get()), nullptr);
}

TEST(OpenPanel, beginsAsAPanelForOneFile) {
    const auto panel = NSOpenPanel::openPanel();
    EXPECT_TRUE(panel->canChooseFiles);
    EXPECT_FALSE(panel->canChooseDirectories);
    EXPECT_FALSE(panel->allowsMultipleSelection);
    EXPECT_TRUE(panel->filename().isEmpty());
}

TEST(OpenPanel, cancelsAtOnceWhereThereIsNoDisplay) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", "/chosen\n");
    for (const std::optional<std::string>& display :
         {std::optional<std::string>(), std::optional<std::string>("")}) {
        const ScopedVariable x11("DISPLAY", display), wayland("WAYLAND_DISPLAY", display);
        EXPECT_EQ(folderPanel()->runModal(), NSCancelButton);
        EXPECT_EQ(askAtDesktop({"Choose", true, false}).failure().reason, Reason::unsupported);
    }
    EXPECT_EQ(desktop.runs(), Runs{});
}

TEST(OpenPanel, eitherKindOfDisplayIsEnough) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", "/chosen\n");
    EXPECT_EQ(chosenFolder(), "/chosen");
    const ScopedVariable x11("DISPLAY", std::nullopt), wayland("WAYLAND_DISPLAY", "wayland-0");
    EXPECT_EQ(chosenFolder(), "/chosen");
}

TEST(OpenPanel, cancelsWhereNothingCanShowADialogue) {
    const FakeDesktop desktop;
    EXPECT_EQ(chosenFolder(), "cancel");
}

TEST(OpenPanel, cancelsWhereNothingMayBeChosen) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", "/chosen\n");
    const auto panel = folderPanel();
    panel->canChooseDirectories = false;
    EXPECT_EQ(panel->runModal(), NSCancelButton);
    EXPECT_EQ(desktop.runs(), Runs{});
}

TEST(OpenPanel, zenityIsAskedForAFolder) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", "/home/anna/Pictures\n");
    EXPECT_EQ(chosenFolder(u"Please choose directory for \"Web \u00e9\""), "/home/anna/Pictures");
    EXPECT_EQ(desktop.runs(), (Runs{{"zenity", "--file-selection", "--directory",
                                     "--title=Please choose directory for \"Web \u00e9\""}}));
}

TEST(OpenPanel, kdialogIsAskedWhereThereIsNoZenity) {
    const FakeDesktop desktop;
    desktop.addProgram("kdialog", "/home/anna/Pictures\n");
    EXPECT_EQ(chosenFolder(), "/home/anna/Pictures");
    EXPECT_EQ(desktop.runs(), (Runs{{"kdialog", "--title=Choose", "--getexistingdirectory"}}));
}

TEST(OpenPanel, whatMayBeChosenDecidesTheKindOfDialogue) {
    const struct {
        bool files, folders;
        Runs runs;
    } cases[] = {
        {true,
         false,
         {{"zenity", "--file-selection", "--title="}, {"kdialog", "--title=", "--getopenfilename"}}},
        {true,
         true,
         {{"zenity", "--file-selection", "--directory", "--title="},
          {"kdialog", "--title=", "--getexistingdirectory"}}},
    };
    for (const auto& [files, folders, runs] : cases) {
        const FakeDesktop desktop;
        desktop.addProgram("zenity", "", "exit 255");
        desktop.addProgram("kdialog", "/chosen\n");
        const auto panel = NSOpenPanel::openPanel();
        panel->canChooseFiles = files;
        panel->canChooseDirectories = folders;
        EXPECT_EQ(panel->runModal(), NSOKButton);
        EXPECT_EQ(desktop.runs(), runs);
    }
}

TEST(OpenPanel, aCancelledDialogueIsNotFollowedByAnother) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", "", "exit 1");
    desktop.addProgram("kdialog", "/chosen\n");
    EXPECT_EQ(chosenFolder(), "cancel");
    ASSERT_EQ(desktop.runs().size(), 1u);
    EXPECT_EQ(desktop.runs()[0][0], "zenity");
}

TEST(OpenPanel, kdialogCanBeCancelledToo) {
    const FakeDesktop desktop;
    desktop.addProgram("kdialog", "", "exit 1");
    EXPECT_EQ(chosenFolder(), "cancel");
}

TEST(OpenPanel, aProgramThatShowsNothingGivesWayToTheNext) {
    const struct {
        std::string output, end;
    } cases[] = {
        {"", "exit 255"},
        {"/half", "exit 3"},
        {"", "kill -KILL $$"},
        {"/half", "kill -HUP $$"},
        {"", "exit 0"},
        {"\n", "exit 0"},
        {"(null)\n", "exit 0"},
        {std::string("/a\0b\n", 5), "exit 0"},
        {std::string(70000, '/'), "exit 0"},
    };
    for (const auto& [output, end] : cases) {
        const FakeDesktop desktop;
        desktop.addProgram("zenity", output, end);
        desktop.addProgram("kdialog", "/chosen\n");
        EXPECT_EQ(chosenFolder(), "/chosen") << end;
        EXPECT_EQ(desktop.runs().size(), 2u) << end;
    }
}

TEST(OpenPanel, aMessageIsNeverAnOption) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", "/chosen\n");
    for (const char16_t* message :
         {u"--version", u"-h", u"", u"a b;$(id) `id` \"'\\", u"two\nlines", u"100%s"}) {
        EXPECT_EQ(chosenFolder(message), "/chosen");
        EXPECT_EQ(desktop.runs().back().back(), "--title=" + NSString(message).utf8());
        EXPECT_EQ(desktop.runs().back().size(), 4u);
    }
}

TEST(OpenPanel, aMessageThatNoDialogueCouldTakeIsStillShown) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", "/chosen\n");
    const NSString fromBytes = NSString::fromUTF8("\xff\u00e9");
    EXPECT_EQ(chosenFolder(fromBytes + std::u16string(1, u'\0') + u"\U0001F600" + std::u16string(1, 0xD83D)),
              "/chosen");
    EXPECT_EQ(desktop.runs().back().back(), "--title=\uFFFD\u00e9\uFFFD\U0001F600\uFFFD");
}

TEST(OpenPanel, namesOfAnyBytesSurviveAProgram) {
    const std::string names[] = {"/",   "/a b", "/\xff\xfe\x80", "/tab\there", "/\u3042\U0001F600",
                                 "/-n", "/a\nb"};
    for (const std::string& name : names) {
        const FakeDesktop desktop;
        desktop.addProgram("zenity", name + "\n");
        EXPECT_EQ(chosenFolder(), name);
    }
}

TEST(OpenPanel, oneNewlineIsRemovedFromWhatAProgramSays) {
    const std::pair<std::string, std::string> cases[] = {{"/a", "/a"}, {"/a\n", "/a"}, {"/a\n\n", "/a\n"}};
    for (const auto& [output, name] : cases) {
        const FakeDesktop desktop;
        desktop.addProgram("zenity", output);
        EXPECT_EQ(chosenFolder(), name);
    }
}

TEST(OpenPanel, forgetsAnEarlierChoiceWhenItIsCancelled) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", "/first\n");
    const auto panel = folderPanel();
    EXPECT_EQ(panel->runModal(), NSOKButton);
    desktop.addProgram("zenity", "", "exit 1");
    EXPECT_EQ(panel->runModal(), NSCancelButton);
    EXPECT_TRUE(panel->filename().isEmpty());
}

/// A desktop on which all three means are there, so that the tests can tell which ones were asked.
class PortalPanel : public ::testing::Test {
protected:
    void SetUp() override {
        if (const std::string reason = FakePortal::whyMissing(); !reason.empty())
            GTEST_SKIP() << reason;
        desktop_.addProgram("zenity", "/from/zenity\n");
        desktop_.addProgram("kdialog", "/from/kdialog\n");
    }

    const FakeDesktop desktop_;
};

TEST_F(PortalPanel, isAskedBeforeAnyProgram) {
    const FakePortal portal(desktop_, "chooses", {folderURI});
    EXPECT_EQ(chosenFolder(u"Please choose directory for \"Web\""), "/home/anna/Pictures");
    EXPECT_EQ(desktop_.runs(), Runs{});
    EXPECT_EQ(portal.questions(), R"(["", "Please choose directory for \"Web\"", {"directory": 1, )"
                                  R"("handle_token": "kestrine_open_panel", "multiple": 0}])"
                                  "\n");
}

TEST_F(PortalPanel, offersFilesAndSeveralWhenThePanelDoes) {
    const FakePortal portal(desktop_, "chooses", {"file:///first", "file:///second"});
    const auto panel = NSOpenPanel::openPanel();
    panel->allowsMultipleSelection = true;
    ASSERT_EQ(panel->runModal(), NSOKButton);
    EXPECT_EQ(panel->filename().utf8(), "/first");
    EXPECT_EQ(
        portal.questions(),
        "[\"\", \"\", {\"directory\": 0, \"handle_token\": \"kestrine_open_panel\", \"multiple\": 1}]\n");
}

TEST_F(PortalPanel, anAnswerIsFoundHoweverItComes) {
    for (const char* behaviour :
         {"answers early", "other handle", "others first", "forged first", "more results"}) {
        const FakePortal portal(desktop_, behaviour, {folderURI});
        EXPECT_EQ(chosenFolder(), "/home/anna/Pictures") << behaviour;
    }
    EXPECT_EQ(desktop_.runs(), Runs{});
}

TEST_F(PortalPanel, namesOfAnyBytesSurvive) {
    const FakePortal portal(desktop_, "chooses", {"file:///%FF%FEa%20b%0A%E3%81%82%25"});
    EXPECT_EQ(chosenFolder(), "/\xff\xfe"
                              "a b\n\u3042%");
}

TEST_F(PortalPanel, aCancelOpensNoOtherDialogue) {
    const FakePortal portal(desktop_, "cancels");
    EXPECT_EQ(chosenFolder(), "cancel");
    EXPECT_EQ(desktop_.runs(), Runs{});
}

TEST_F(PortalPanel, aClosedWindowIsACancel) {
    const FakePortal portal(desktop_, "closed window");
    EXPECT_EQ(chosenFolder(), "cancel");
    EXPECT_EQ(desktop_.runs(), Runs{});
}

TEST_F(PortalPanel, whatCannotAnswerGivesWayToTheNext) {
    const struct {
        const char* behaviour;
        std::vector<std::string> uris;
        bool wasAsked;
    } cases[] = {
        {"no chooser", {}, false}, {"old", {folderURI}, false},
        {"refuses", {}, true},     {"shows nothing", {}, true},
        {"vanishes", {}, true},    {"ends bus", {}, true},
        {"no results", {}, true},  {"text for a list", {}, true},
        {"chooses", {}, true},     {"chooses", {"http://example.org/"}, true},
    };
    for (const auto& [behaviour, uris, wasAsked] : cases) {
        const std::size_t runsBefore = desktop_.runs().size();
        std::filesystem::remove(desktop_.folder() / "questions");
        const FakePortal portal(desktop_, behaviour, uris);
        EXPECT_EQ(chosenFolder(), "/from/zenity") << behaviour;
        EXPECT_EQ(desktop_.runs().size(), runsBefore + 1) << behaviour;
        EXPECT_EQ(!portal.questions().empty(), wasAsked) << behaviour;
    }
}

TEST_F(PortalPanel, anOldPortalStillOffersFiles) {
    const FakePortal portal(desktop_, "old", {"file:///a.jpg"});
    const auto panel = NSOpenPanel::openPanel();
    ASSERT_EQ(panel->runModal(), NSOKButton);
    EXPECT_EQ(panel->filename().utf8(), "/a.jpg");
}

TEST_F(PortalPanel, aBusWithoutPortalGivesWayToTheNext) {
    const FakePortal portal(desktop_, "chooses", {folderURI});
    std::filesystem::remove(desktop_.folder() / "services/portal.service");
    EXPECT_EQ(chosenFolder(), "/from/zenity");
}

TEST_F(PortalPanel, allMeansAreTriedInTheirOrder) {
    desktop_.addProgram("zenity", "", "exit 255");
    const FakePortal portal(desktop_, "refuses");
    EXPECT_EQ(chosenFolder(), "/from/kdialog");
    EXPECT_FALSE(portal.questions().empty());
    const Runs runs = desktop_.runs();
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_EQ(runs[0][0], "zenity");
    EXPECT_EQ(runs[1][0], "kdialog");
}

} // namespace
} // namespace kestrine

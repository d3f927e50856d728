#include "platform/appkit/DesktopDialog.h"
#include "platform/appkit/NSOpenPanel.h"
#include "tests/platform/appkit/FakeDesktop.h"

#include <csignal>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::FakeDesktop;
using testing::FakePortal;
using testing::ScopedVariable;
using Runs = FakeDesktop::Runs;

std::string uriOf(const std::string& path) { return "file://" + path; }

/// A panel for one folder, as presets use it.
std::unique_ptr<NSOpenPanel> folderPanel(const NSString& message = u"Choose") {
    std::unique_ptr<NSOpenPanel> panel = NSOpenPanel::openPanel();
    panel->canChooseFiles = false;
    panel->canChooseDirectories = true;
    panel->canCreateDirectories = true;
    panel->message = message;
    return panel;
}

/// The result of a folder panel: the path after OK, otherwise "cancel".
std::string chosenFolder(const NSString& message = u"Choose") {
    const std::unique_ptr<NSOpenPanel> panel = folderPanel(message);
    return panel->runModal() == NSOKButton ? panel->filename().utf8() : "cancel";
}

class InjectedPanel final : public NSOpenPanel {
public:
    int runModal() override { return NSOKButton; }
    NSString filename() const override { return u"/injected"; }
};

TEST(OpenPanel, comesFromTheFactoryIfThereIsOne) {
    NSOpenPanel::setFactory(
        []() -> std::unique_ptr<NSOpenPanel> { return std::make_unique<InjectedPanel>(); });
    const auto injected = NSOpenPanel::openPanel();
    NSOpenPanel::setFactory(nullptr);
    EXPECT_NE(dynamic_cast<InjectedPanel*>(injected.get()), nullptr);
    EXPECT_EQ(dynamic_cast<InjectedPanel*>(NSOpenPanel::openPanel().get()), nullptr);
}

TEST(OpenPanel, isAPanelForOneFileByDefault) {
    const auto panel = NSOpenPanel::openPanel();
    EXPECT_TRUE(panel->canChooseFiles);
    EXPECT_FALSE(panel->canChooseDirectories);
    EXPECT_FALSE(panel->allowsMultipleSelection);
    EXPECT_TRUE(panel->filename().isEmpty());
}

TEST(OpenPanel, cancelsAtOnceWithoutADisplay) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", desktop.addFolder() + "\n");
    for (const std::optional<std::string>& display :
         {std::optional<std::string>(), std::optional<std::string>("")}) {
        const ScopedVariable x11("DISPLAY", display), wayland("WAYLAND_DISPLAY", display);
        EXPECT_EQ(folderPanel()->runModal(), NSCancelButton);
        EXPECT_EQ(askAtDesktop({"Choose", true, false}).failure().reason, Reason::unsupported);
    }
    EXPECT_EQ(desktop.runs(), Runs{});
}

TEST(OpenPanel, oneKindOfDisplayIsEnough) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", desktop.addFolder() + "\n");
    EXPECT_EQ(chosenFolder(), desktop.addFolder());
    const ScopedVariable x11("DISPLAY", std::nullopt), wayland("WAYLAND_DISPLAY", "wayland-0");
    EXPECT_EQ(chosenFolder(), desktop.addFolder());
}

TEST(OpenPanel, cancelsIfNoProgramCanShowADialogue) {
    const FakeDesktop desktop;
    EXPECT_EQ(chosenFolder(), "cancel");
}

TEST(OpenPanel, cancelsIfNeitherFilesNorFoldersMayBeChosen) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", desktop.addFolder() + "\n");
    const auto panel = folderPanel();
    panel->canChooseDirectories = false;
    EXPECT_EQ(panel->runModal(), NSCancelButton);
    EXPECT_EQ(desktop.runs(), Runs{});
}

TEST(OpenPanel, zenityIsRunForAFolder) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", desktop.addFolder() + "\n");
    EXPECT_EQ(chosenFolder(u"Please choose directory for \"Web \u00e9\""), desktop.addFolder());
    EXPECT_EQ(desktop.runs(), (Runs{{"zenity", "--file-selection", "--directory",
                                     "--title=Please choose directory for \"Web \u00e9\""}}));
}

TEST(OpenPanel, kdialogIsRunWithoutZenity) {
    const FakeDesktop desktop;
    desktop.addProgram("kdialog", desktop.addFolder() + "\n");
    EXPECT_EQ(chosenFolder(), desktop.addFolder());
    EXPECT_EQ(desktop.runs(), (Runs{{"kdialog", "--title=Choose", "--getexistingdirectory"}}));
}

TEST(OpenPanel, theKindOfDialogueDependsOnWhatMayBeChosen) {
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
        desktop.addProgram("kdialog", desktop.addFolder() + "\n");
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
    desktop.addProgram("kdialog", desktop.addFolder() + "\n");
    EXPECT_EQ(chosenFolder(), "cancel");
    ASSERT_EQ(desktop.runs().size(), 1u);
    EXPECT_EQ(desktop.runs()[0][0], "zenity");
}

TEST(OpenPanel, kdialogCanAlsoBeCancelled) {
    const FakeDesktop desktop;
    desktop.addProgram("kdialog", "", "exit 1");
    EXPECT_EQ(chosenFolder(), "cancel");
}

TEST(OpenPanel, afterAProgramThatFailsTheNextIsRun) {
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
        desktop.addProgram("kdialog", desktop.addFolder() + "\n");
        EXPECT_EQ(chosenFolder(), desktop.addFolder()) << end;
        EXPECT_EQ(desktop.runs().size(), 2u) << end;
    }
}

TEST(OpenPanel, aMessageIsNeverAnOption) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", desktop.addFolder() + "\n");
    for (const char16_t* message :
         {u"--version", u"-h", u"", u"a b;$(id) `id` \"'\\", u"two\nlines", u"100%s"}) {
        EXPECT_EQ(chosenFolder(message), desktop.addFolder());
        EXPECT_EQ(desktop.runs().back().back(), "--title=" + NSString(message).utf8());
        EXPECT_EQ(desktop.runs().back().size(), 4u);
    }
}

TEST(OpenPanel, charactersThatADialogueCannotShowAreReplaced) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", desktop.addFolder() + "\n");
    const NSString fromBytes = NSString::fromUTF8("\xff\u00e9");
    EXPECT_EQ(chosenFolder(fromBytes + std::u16string(1, u'\0') + u"\U0001F600" + std::u16string(1, 0xD83D)),
              desktop.addFolder());
    EXPECT_EQ(desktop.runs().back().back(), "--title=\uFFFD\u00e9\uFFFD\U0001F600\uFFFD");
}

TEST(OpenPanel, namesOfAnyBytesAreReadFromAProgram) {
    for (const char* name : {"a b", "\xff\xfe\x80", "tab\there", "\u3042\U0001F600", "-n", "a\nb", "a\n"}) {
        const FakeDesktop desktop;
        desktop.addProgram("zenity", desktop.addFolder(name) + "\n");
        EXPECT_EQ(chosenFolder(), desktop.addFolder(name));
    }
}

TEST(OpenPanel, outputWithoutANewlineIsAccepted) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", "/");
    EXPECT_EQ(chosenFolder(), "/");
}

TEST(OpenPanel, afterAnAnswerThatIsNoExistingFolderTheNextProgramIsRun) {
    const FakeDesktop desktop;
    const std::string file = desktop.folder().write("file", "");
    for (const std::string& answer : {desktop.addFolder() + "/???", desktop.folder() / "missing", file}) {
        desktop.addProgram("zenity", answer + "\n");
        EXPECT_EQ(chosenFolder(), "cancel") << answer;
    }
    desktop.addProgram("kdialog", desktop.addFolder() + "\n");
    EXPECT_EQ(chosenFolder(), desktop.addFolder());
}

TEST(OpenPanel, aChosenFileMustAlsoExist) {
    const FakeDesktop desktop;
    const auto panel = NSOpenPanel::openPanel();
    desktop.addProgram("zenity", desktop.folder() / "missing\n");
    EXPECT_EQ(panel->runModal(), NSCancelButton);
    desktop.addProgram("zenity", desktop.folder().write("file", "") + "\n");
    EXPECT_EQ(panel->runModal(), NSOKButton);
    EXPECT_EQ(panel->filename().utf8(), desktop.folder() / "file");
}

TEST(OpenPanel, programsRunInAUTF8LocaleEvenIfOursIsAnother) {
    struct {
        const char *all, *ctype, *language;
    } const locales[] = {{"", "", "C"},           {"C", "C.UTF-8", "C.UTF-8"}, {"", "POSIX", "C.UTF-8"},
                         {"", "", "xx_XX.UTF-8"}, {"", "C.UTF-8", "C"},        {"xx_XX", "", ""}};
    for (const auto& [all, ctype, language] : locales) {
        const FakeDesktop desktop;
        const ScopedVariable lcAll("LC_ALL", all), lcCtype("LC_CTYPE", ctype), lang("LANG", language);
        desktop.addProgram("zenity", desktop.addFolder() + "\n",
                           "/usr/bin/locale charmap >$folder/charmap 2>&1");
        EXPECT_EQ(chosenFolder(u"\u00e9"), desktop.addFolder());
        EXPECT_EQ(testing::readFile(desktop.folder() / "charmap"), "UTF-8\n") << all << ctype << language;
    }
}

TEST(OpenPanel, aUTF8LocaleIsNotChanged) {
    const FakeDesktop desktop;
    const ScopedVariable lcAll("LC_ALL", ""), lcCtype("LC_CTYPE", "C.UTF-8"), lang("LANG", "C");
    desktop.addProgram("zenity", desktop.addFolder() + "\n", "echo $LC_ALL,$LC_CTYPE,$LANG >$folder/locale");
    EXPECT_EQ(chosenFolder(), desktop.addFolder());
    EXPECT_EQ(testing::readFile(desktop.folder() / "locale"), ",C.UTF-8,C\n");
}

TEST(OpenPanel, oneDialogueIsEnoughInAHostThatIgnoresSIGCHLD) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", desktop.addFolder() + "\n");
    desktop.addProgram("kdialog", "/\n");
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(chosenFolder(), desktop.addFolder());
    EXPECT_EQ(desktop.runs().size(), 1u);
    desktop.addProgram("zenity", "", "exit 1");
    EXPECT_EQ(chosenFolder(), "cancel");
    EXPECT_EQ(desktop.runs().size(), 2u);
    std::signal(SIGCHLD, before);
}

TEST(OpenPanel, hasNoFilenameAfterACancel) {
    const FakeDesktop desktop;
    desktop.addProgram("zenity", desktop.addFolder() + "\n");
    const auto panel = folderPanel();
    EXPECT_EQ(panel->runModal(), NSOKButton);
    desktop.addProgram("zenity", "", "exit 1");
    EXPECT_EQ(panel->runModal(), NSCancelButton);
    EXPECT_TRUE(panel->filename().isEmpty());
}

/// A desktop with a portal, zenity and kdialog, so that tests can check which of them were used.
class PortalPanel : public ::testing::Test {
protected:
    void SetUp() override {
        if (const std::string reason = FakePortal::whyMissing(); !reason.empty())
            GTEST_SKIP() << reason;
        desktop_.addProgram("zenity", zenitysFolder_ + "\n");
        desktop_.addProgram("kdialog", kdialogsFolder_ + "\n");
    }

    const FakeDesktop desktop_;
    const std::string portalsFolder_ = desktop_.addFolder("portal"), folderURI_ = uriOf(portalsFolder_);
    const std::string zenitysFolder_ = desktop_.addFolder("zenity"),
                      kdialogsFolder_ = desktop_.addFolder("kdialog");
};

TEST_F(PortalPanel, isUsedBeforeAnyProgram) {
    const FakePortal portal(desktop_, "chooses", {folderURI_});
    EXPECT_EQ(chosenFolder(u"Please choose directory for \"Web\""), portalsFolder_);
    EXPECT_EQ(desktop_.runs(), Runs{});
    EXPECT_EQ(portal.questions(), R"(["", "Please choose directory for \"Web\"", {"directory": 1, )"
                                  R"("handle_token": "kestrine_open_panel", "multiple": 0}])"
                                  "\n");
}

TEST_F(PortalPanel, offersFilesAndSeveralItemsIfThePanelDoes) {
    const FakePortal portal(desktop_, "chooses", {uriOf(portalsFolder_), uriOf(zenitysFolder_)});
    const auto panel = NSOpenPanel::openPanel();
    panel->allowsMultipleSelection = true;
    ASSERT_EQ(panel->runModal(), NSOKButton);
    EXPECT_EQ(panel->filename().utf8(), portalsFolder_);
    EXPECT_EQ(
        portal.questions(),
        "[\"\", \"\", {\"directory\": 0, \"handle_token\": \"kestrine_open_panel\", \"multiple\": 1}]\n");
}

TEST_F(PortalPanel, anAnswerIsReceivedInEveryOrderOfMessages) {
    for (const char* behaviour :
         {"answers early", "other handle", "others first", "forged first", "more results"}) {
        const FakePortal portal(desktop_, behaviour, {folderURI_});
        EXPECT_EQ(chosenFolder(), portalsFolder_) << behaviour;
    }
    EXPECT_EQ(desktop_.runs(), Runs{});
}

TEST_F(PortalPanel, namesOfAnyBytesAreKept) {
    const std::string folder = desktop_.addFolder("\xff\xfe"
                                                  "a b\n\u3042%");
    const FakePortal portal(desktop_, "chooses",
                            {uriOf(desktop_.folder() / "chosen/%FF%FEa%20b%0A%E3%81%82%25")});
    EXPECT_EQ(chosenFolder(), folder);
}

TEST_F(PortalPanel, afterACancelNoOtherDialogueOpens) {
    const FakePortal portal(desktop_, "cancels");
    EXPECT_EQ(chosenFolder(), "cancel");
    EXPECT_EQ(desktop_.runs(), Runs{});
}

TEST_F(PortalPanel, aClosedWindowIsACancel) {
    const FakePortal portal(desktop_, "closed window");
    EXPECT_EQ(chosenFolder(), "cancel");
    EXPECT_EQ(desktop_.runs(), Runs{});
}

TEST_F(PortalPanel, afterAPortalThatCannotAnswerZenityIsUsed) {
    const struct {
        const char* behaviour;
        std::vector<std::string> uris;
        bool wasAsked;
    } cases[] = {
        {"no chooser", {}, false},
        {"old", {folderURI_}, false},
        {"refuses", {}, true},
        {"shows nothing", {}, true},
        {"vanishes", {}, true},
        {"ends bus", {}, true},
        {"no results", {}, true},
        {"text for a list", {}, true},
        {"chooses", {}, true},
        {"chooses", {"http://example.org/"}, true},
        {"chooses", {folderURI_ + "/missing"}, true},
    };
    for (const auto& [behaviour, uris, wasAsked] : cases) {
        const std::size_t runsBefore = desktop_.runs().size();
        std::filesystem::remove(desktop_.folder() / "questions");
        const FakePortal portal(desktop_, behaviour, uris);
        EXPECT_EQ(chosenFolder(), zenitysFolder_) << behaviour;
        EXPECT_EQ(desktop_.runs().size(), runsBefore + 1) << behaviour;
        EXPECT_EQ(!portal.questions().empty(), wasAsked) << behaviour;
    }
}

TEST_F(PortalPanel, afterATimeoutZenityIsUsed) {
    const FakePortal portal(desktop_, "slow", {folderURI_});
    EXPECT_EQ(chosenFolder(), zenitysFolder_);
    EXPECT_EQ(portal.questions(), "");
}

TEST_F(PortalPanel, anOldPortalIsUsedForFiles) {
    const FakePortal portal(desktop_, "old", {uriOf(desktop_.folder().write("a.jpg", ""))});
    const auto panel = NSOpenPanel::openPanel();
    ASSERT_EQ(panel->runModal(), NSOKButton);
    EXPECT_EQ(panel->filename().utf8(), desktop_.folder() / "a.jpg");
}

TEST_F(PortalPanel, withoutAPortalOnTheBusZenityIsUsed) {
    const FakePortal portal(desktop_, "chooses", {folderURI_});
    std::filesystem::remove(desktop_.folder() / "services/portal.service");
    EXPECT_EQ(chosenFolder(), zenitysFolder_);
}

TEST_F(PortalPanel, zenityAndThenKdialogAreTriedAfterThePortal) {
    desktop_.addProgram("zenity", "", "exit 255");
    const FakePortal portal(desktop_, "refuses");
    EXPECT_EQ(chosenFolder(), kdialogsFolder_);
    EXPECT_FALSE(portal.questions().empty());
    const Runs runs = desktop_.runs();
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_EQ(runs[0][0], "zenity");
    EXPECT_EQ(runs[1][0], "kdialog");
}

} // namespace
} // namespace kestrine

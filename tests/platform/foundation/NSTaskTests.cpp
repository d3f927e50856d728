#include "platform/foundation/NSException.h"
#include "platform/foundation/NSTask.h"
#include "tests/support/CurrentFolder.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::CurrentFolder;
using testing::TemporaryFolder;
namespace fs = std::filesystem;

NSTask task(const NSString& program, const std::vector<NSString>& arguments) {
    NSTask made;
    made.setLaunchPath(program);
    made.setArguments(arguments);
    return made;
}

/// The name of the exception that `steps` raise; "" if there is none.
std::string nameRaisedBy(const std::function<void()>& steps) {
    try {
        steps();
    } catch (const NSException& raised) {
        return raised.name();
    }
    return "";
}

TEST(NSTask, afterTheWaitTheProgramHasEnded) {
    const TemporaryFolder folder;
    NSTask touch =
        task(u"/bin/sh", {u"-c", u"sleep 0.1; echo done >\"$0\"", NSString::fromUTF8(folder / "made")});
    touch.launch();
    touch.waitUntilExit();
    EXPECT_EQ(testing::readFile(folder / "made"), "done\n");
}

TEST(NSTask, argumentsReachTheProgramUnchanged) {
    const TemporaryFolder folder;
    const std::string names[] = {"two words", "$HOME", "`id`;*", "quote'\"\\", "line\nfeed", "caf\xe9", "-x"};
    std::vector<NSString> arguments{u"--"};
    for (const std::string& name : names)
        arguments.push_back(NSString::fromUTF8(name));
    const CurrentFolder current(folder.path());
    NSTask touch = task(u"/usr/bin/touch", arguments);
    touch.launch();
    touch.waitUntilExit();
    for (const std::string& name : names)
        EXPECT_TRUE(fs::exists(name)) << name;
    EXPECT_EQ(std::distance(fs::directory_iterator("."), fs::directory_iterator()),
              static_cast<std::ptrdiff_t>(std::size(names)));
}

TEST(NSTask, theProgramInheritsStandardOutput) {
    ::testing::internal::CaptureStdout();
    NSTask echo = task(u"/bin/echo", {u"hello"});
    echo.launch();
    echo.waitUntilExit();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "hello\n");
}

TEST(NSTask, aProgramThatCannotBeStartedRaises) {
    const TemporaryFolder folder;
    const std::string unfit = folder.write("unfit", "text");
    for (const std::string& path : {std::string(), folder / "missing", unfit, folder.path().string()})
        EXPECT_EQ(nameRaisedBy([&] { task(NSString::fromUTF8(path), {}).launch(); }),
                  "NSInvalidArgumentException")
            << path;
}

TEST(NSTask, theLaunchPathIsNotLookedUpInPath) {
    const TemporaryFolder folder;
    const CurrentFolder current(folder.path());
    EXPECT_EQ(nameRaisedBy([] { task(u"true", {}).launch(); }), "NSInvalidArgumentException");
    fs::copy_file("/bin/true", "true");
    EXPECT_EQ(nameRaisedBy([] {
                  NSTask local = task(u"true", {});
                  local.launch();
                  local.waitUntilExit();
              }),
              "");
}

TEST(NSTask, aTaskRunsOnce) {
    NSTask once = task(u"/bin/true", {});
    EXPECT_EQ(nameRaisedBy([&] { once.waitUntilExit(); }), "NSInvalidArgumentException") << "not launched";
    once.launch();
    EXPECT_EQ(nameRaisedBy([&] { once.launch(); }), "NSInvalidArgumentException");
    once.waitUntilExit();
    EXPECT_EQ(nameRaisedBy([&] { once.waitUntilExit(); }), "") << "it has ended";
}

TEST(NSTask, anArgumentWithAZeroCharacterRaises) {
    const NSString zero(std::u16string(u"a\0b", 3));
    EXPECT_EQ(nameRaisedBy([&] { task(u"/bin/true", {zero}).launch(); }), "NSInvalidArgumentException");
}

} // namespace
} // namespace kestrine

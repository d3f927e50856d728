#include "platform/host/process/ChildProcess.h"
#include "platform/host/process/StandardStreams.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::runIsolated;
using testing::TemporaryFolder;

ChildEnd endOf(const std::string& program, const std::vector<std::string>& arguments) {
    Result<ChildProcess> child = ChildProcess::start(program, arguments);
    EXPECT_TRUE(child);
    return child ? *child->wait() : ChildEnd{-1, false};
}

TEST(ChildProcess, argumentsArriveExactlyAsGiven) {
    EXPECT_EQ(endOf("/usr/bin/test", {"a b;$(id)\n\xFF", "=", "a b;$(id)\n\xFF"}).code, 0);
    EXPECT_EQ(endOf("/usr/bin/test", {""}).code, 1);
}

TEST(ChildProcess, aNameWithoutASlashIsLookedUp) {
    runIsolated([] {
        ::setenv("PATH", "/usr/bin:/bin", 1);
        EXPECT_EQ(endOf("true", {}).code, 0);
        EXPECT_EQ(ChildProcess::start("no-such-program", {}).failure().reason, Reason::notFound);
    });
}

TEST(ChildProcess, exitStatusAndSignalAreDistinguished) {
    const ChildEnd exited = endOf("/bin/sh", {"-c", "exit 7"});
    EXPECT_EQ(exited.code, 7);
    EXPECT_FALSE(exited.bySignal);
    const ChildEnd killed = endOf("/bin/sh", {"-c", "kill -TERM $$"});
    EXPECT_EQ(killed.code, SIGTERM);
    EXPECT_TRUE(killed.bySignal);
}

TEST(ChildProcess, aMissingProgramCannotBeStarted) {
    EXPECT_EQ(ChildProcess::start("/no/such/program", {}).failure().reason, Reason::notFound);
    EXPECT_EQ(ChildProcess::start("", {}).failure().reason, Reason::malformed);
    EXPECT_EQ(ChildProcess::start("/bin/true", {std::string("a\0b", 3)}).failure().reason, Reason::malformed);
}

TEST(ChildProcess, aFileThatIsNotAProgramIsNotPassedToAShell) {
    const TemporaryFolder folder;
    const std::string script = folder.write("script", "exit 0\n");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    EXPECT_FALSE(ChildProcess::start(script, {}));
}

TEST(ChildProcess, theChildInheritsTheStandardStreams) {
    const TemporaryFolder folder;
    runIsolated([&] {
        ASSERT_NE(std::freopen((folder / "out").c_str(), "w", stdout), nullptr);
        EXPECT_EQ(endOf("/bin/echo", {"hello"}).code, 0);
    });
    EXPECT_EQ(testing::readFile(folder / "out"), "hello\n");
}

TEST(ChildProcess, ignoredSignalsHaveTheirDefaultActionInTheChild) {
    runIsolated([] {
        prepareStandardStreams();
        for (const char* signal : {"PIPE", "XFSZ"}) {
            const ChildEnd end = endOf("/bin/sh", {"-c", std::string("kill -") + signal + " $$"});
            EXPECT_TRUE(end.bySignal) << signal;
        }
    });
}

TEST(ChildProcess, waitingFailsWhereChildrenAreNotWaitedFor) {
    runIsolated([] {
        ::alarm(30);
        std::signal(SIGCHLD, SIG_IGN);
        Result<ChildProcess> child = ChildProcess::start("/bin/true", {});
        ASSERT_TRUE(child);
        EXPECT_EQ(child->wait().failure().reason, Reason::inputOutput);
    });
}

} // namespace
} // namespace kestrine

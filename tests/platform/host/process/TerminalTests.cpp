#include "platform/host/files/FileDescriptor.h"
#include "platform/host/process/Terminal.h"
#include "tests/support/IsolatedProcess.h"

#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace kestrine {
namespace {

TEST(Terminal, eachOutputStreamHasItsOwn) {
    testing::runIsolated([] {
        const FileDescriptor terminal(::posix_openpt(O_RDWR | O_NOCTTY)), file(::open("/dev/null", O_WRONLY));
        ASSERT_TRUE(terminal.isOpen() && file.isOpen());
        const auto areTerminals = [](const FileDescriptor& output, const FileDescriptor& errors) {
            ::dup2(output.number(), STDOUT_FILENO);
            ::dup2(errors.number(), STDERR_FILENO);
            return std::pair(isTerminal(OutputStream::standardOutput),
                             isTerminal(OutputStream::standardError));
        };
        EXPECT_EQ(areTerminals(terminal, file), std::pair(true, false));
        EXPECT_EQ(areTerminals(file, terminal), std::pair(false, true));
    });
}

} // namespace
} // namespace kestrine

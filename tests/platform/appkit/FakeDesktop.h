// A desktop for tests: a display that does not exist, dialogue programs that only record their arguments, and
// a separate message bus with a portal whose replies the test chooses.
#pragma once

#include "tests/support/TemporaryFolder.h"

#include <cstdio>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrine::testing {

/// Sets or removes an environment variable of this process during its lifetime.
class ScopedVariable {
public:
    ScopedVariable(std::string name, const std::optional<std::string>& value);
    ~ScopedVariable();
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const std::string name_;
    std::optional<std::string> before_;
};

/// During its lifetime only the programs in its folder are found, there is no message bus, and the locale is
/// UTF-8.
class FakeDesktop {
public:
    FakeDesktop();

    /// Creates a program that records its arguments, prints `output` and then runs the shell commands `end`,
    /// in which $folder is folder().
    void addProgram(const std::string& name, const std::string& output,
                    const std::string& end = "exit 0") const;

    /// Creates a folder that can be chosen. Returns its path.
    std::string addFolder(const std::string& name = "Pictures") const;

    /// All runs so far in order; each has the program's name and its arguments.
    using Runs = std::vector<std::vector<std::string>>;
    Runs runs() const;

    const TemporaryFolder& folder() const { return folder_; }

private:
    const TemporaryFolder folder_;
    const ScopedVariable path_, display_, wayland_, bus_, locale_, allCategories_;
};

/// A message bus with FakePortal.py as the desktop's portal, which the bus starts at the first call.
class FakePortal {
public:
    /// Why this system cannot run one; empty if it can.
    static std::string whyMissing();

    /// `behaviour` as in FakePortal.py; `uris` are the chosen items that it returns. Needs a FakeDesktop.
    FakePortal(const FakeDesktop& desktop, const std::string& behaviour,
               const std::vector<std::string>& uris = {});
    ~FakePortal();
    FakePortal(const FakePortal&) = delete;
    FakePortal& operator=(const FakePortal&) = delete;

    /// The requests received, one per line: [parent window, title, {options}].
    std::string questions() const { return readFile(record_); }

private:
    const std::string record_;
    std::FILE* daemon_; ///< the output of the bus daemon
    pid_t process_ = 0;
    const ScopedVariable bus_;
};

} // namespace kestrine::testing

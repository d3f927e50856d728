// A desktop for tests: a display that does not exist, dialogue programs that only record their arguments, and
// a message bus of its own with a portal that answers as a test wants.
#pragma once

#include "tests/support/TemporaryFolder.h"

#include <cstdio>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrine::testing {

/// A variable of this process's environment, set (or removed) while the object lives.
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

/// While it lives, only the programs in its folder are found, there is no message bus, and the locale is
/// UTF-8.
class FakeDesktop {
public:
    FakeDesktop();

    /// Makes a program that records its arguments, prints `output` and then runs the shell commands `end`, in
    /// which $folder is folder().
    void addProgram(const std::string& name, const std::string& output,
                    const std::string& end = "exit 0") const;

    /// Makes a folder of that name that a person could choose; its path.
    std::string addFolder(const std::string& name = "Pictures") const;

    /// The arguments of each run so far, one run after the other: name, arguments.
    using Runs = std::vector<std::vector<std::string>>;
    Runs runs() const;

    const TemporaryFolder& folder() const { return folder_; }

private:
    const TemporaryFolder folder_;
    const ScopedVariable path_, display_, wayland_, bus_, locale_, allCategories_;
};

/// A message bus with FakePortal.py as the desktop's portal, which is started by the first call to it.
class FakePortal {
public:
    /// Why tests cannot have one here; empty when they can.
    static std::string whyMissing();

    /// `behaviour` as in FakePortal.py; `uris` are what it gives as chosen. For use inside a FakeDesktop.
    FakePortal(const FakeDesktop& desktop, const std::string& behaviour,
               const std::vector<std::string>& uris = {});
    ~FakePortal();
    FakePortal(const FakePortal&) = delete;
    FakePortal& operator=(const FakePortal&) = delete;

    /// The questions it was asked, one per line: [parent window, title, {options}].
    std::string questions() const { return readFile(record_); }

private:
    const std::string record_;
    std::FILE* daemon_; ///< what the bus daemon says
    pid_t process_ = 0;
    const ScopedVariable bus_;
};

} // namespace kestrine::testing

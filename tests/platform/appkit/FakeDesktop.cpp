#include "tests/platform/appkit/FakeDesktop.h"
#include "tests/support/SourceFolder.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>

namespace kestrine::testing {

namespace {

constexpr const char* python = "/usr/bin/python3";
constexpr const char* busDaemon = "/usr/bin/dbus-daemon";

/// Separates the recorded fields; no argument of a test contains it.
constexpr char fieldEnd = '\x1e', runEnd = '\x1f';

void setVariable(const std::string& name, const std::optional<std::string>& value) {
    if (value)
        ::setenv(name.c_str(), value->c_str(), 1);
    else
        ::unsetenv(name.c_str());
}

std::vector<std::string> split(const std::string& text, char end) {
    std::vector<std::string> pieces;
    std::size_t begin = 0;
    for (std::size_t found; (found = text.find(end, begin)) != std::string::npos; begin = found + 1)
        pieces.push_back(text.substr(begin, found - begin));
    return pieces;
}

/// The bus has its own configuration, so that a test never starts services of the machine's desktop.
std::string busConfiguration(const FakeDesktop& desktop) {
    const std::string folder = desktop.folder().path().string();
    return "<busconfig><type>session</type><listen>unix:path=" + folder + "/bus</listen><servicedir>" + folder
           + "/services</servicedir><policy context=\"default\"><allow send_destination=\"*\"/>"
             "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>";
}

std::string quotedForService(const std::string& argument) { return " \"" + argument + "\""; }

std::string serviceText(const std::string& record, const std::string& behaviour,
                        const std::vector<std::string>& uris) {
    std::string command = python;
    command += quotedForService(inSourceFolder("tests/platform/appkit/FakePortal.py"));
    command += quotedForService(behaviour) + quotedForService(record);
    for (const std::string& uri : uris)
        command += quotedForService(uri);
    return "[D-BUS Service]\nName=org.freedesktop.portal.Desktop\nExec=" + command + "\n";
}

/// The daemon prints its process number when it is ready.
std::FILE* startDaemon(const FakeDesktop& desktop) {
    const std::string configuration = desktop.folder().write("bus.conf", busConfiguration(desktop));
    const std::string command = std::string("exec ") + busDaemon
                                + " --nofork --nopidfile --print-pid --config-file='" + configuration
                                + "' 2>/dev/null";
    return ::popen(command.c_str(), "r");
}

} // namespace

ScopedVariable::ScopedVariable(std::string name, const std::optional<std::string>& value)
    : name_(std::move(name)) {
    if (const char* before = std::getenv(name_.c_str()))
        before_ = before;
    setVariable(name_, value);
}

ScopedVariable::~ScopedVariable() { setVariable(name_, before_); }

FakeDesktop::FakeDesktop()
    : path_("PATH", folder_.path().string()), display_("DISPLAY", ":99"),
      wayland_("WAYLAND_DISPLAY", std::nullopt),
      bus_("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (folder_ / "bus")), locale_("LC_CTYPE", "C.UTF-8"),
      allCategories_("LC_ALL", std::nullopt) {}

std::string FakeDesktop::addFolder(const std::string& name) const {
    const std::string path = folder_ / ("chosen/" + name);
    std::filesystem::create_directories(path);
    return path;
}

void FakeDesktop::addProgram(const std::string& name, const std::string& output,
                             const std::string& end) const {
    folder_.write(name + ".output", output);
    std::string script = "#!/bin/sh\nfolder='" + folder_.path().string() + "'\n";
    script += "{ printf '%s\\036' " + name + " \"$@\"; printf '\\037'; } >>\"$folder/runs\"\n";
    script += "/bin/cat \"$folder/" + name + ".output\"\n" + end + "\n";
    std::filesystem::permissions(folder_.write(name, script), std::filesystem::perms::owner_all);
}

FakeDesktop::Runs FakeDesktop::runs() const {
    Runs runs;
    for (const std::string& run : split(readFile(folder_ / "runs"), runEnd))
        runs.push_back(split(run, fieldEnd));
    return runs;
}

std::string FakePortal::whyMissing() {
    if (!std::filesystem::exists(busDaemon))
        return "needs dbus-daemon (package dbus-daemon)";
    const std::string check = std::string(python) + " -c 'import dbus, gi' 2>/dev/null";
    static const bool hasModules = std::system(check.c_str()) == 0;
    return hasModules ? "" : "needs Python's D-Bus and GLib modules (packages python3-dbus and python3-gi)";
}

FakePortal::FakePortal(const FakeDesktop& desktop, const std::string& behaviour,
                       const std::vector<std::string>& uris)
    : record_(desktop.folder() / "questions"),
      daemon_((desktop.folder().write("services/portal.service", serviceText(record_, behaviour, uris)),
               startDaemon(desktop))),
      bus_("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (desktop.folder() / "bus")) {
    std::array<char, 32> line{};
    if (daemon_ && std::fgets(line.data(), line.size(), daemon_))
        process_ = std::atoi(line.data());
    EXPECT_GT(process_, 0) << "the message bus did not start";
}

FakePortal::~FakePortal() {
    if (process_ > 0)
        ::kill(process_, SIGTERM);
    if (daemon_)
        ::pclose(daemon_);
}

} // namespace kestrine::testing

#include "platform/appkit/DesktopDialog.h"

#include "platform/appkit/PortalFileChooser.h"
#include "platform/host/process/ChildProcess.h"
#include "platform/host/process/Environment.h"

#include <array>

namespace kestrine {

namespace {

/// Bound on what a dialogue program may write: room for any path of the system.
constexpr std::size_t longestOutput = 64 * 1024;

// Exit statuses that zenity and kdialog share; others stand for a dialogue that could not be shown.
constexpr int exitChosen = 0;
constexpr int exitCancelled = 1;

bool isDisplayKnown() {
    const Environment environment = Environment::ofProcess();
    const auto isNamed = [&](const char* variable) {
        return !environment.variable(variable).value_or("").empty();
    };
    return isNamed("DISPLAY") || isNamed("WAYLAND_DISPLAY");
}

/// The path in what a program wrote: all of it but the newline at its end. A name that the program could not
/// express in its own encoding comes out as something else than a path, and is none.
Result<DialogAnswer> pathWritten(const std::string& program, std::string output) {
    if (output.ends_with('\n'))
        output.pop_back();
    if (!output.starts_with('/') || output.find('\0') != std::string::npos)
        return Failure{Reason::malformed, program + " does not say what was chosen"};
    return DialogAnswer(std::move(output));
}

Result<DialogAnswer> askProgram(const std::string& program, const std::vector<std::string>& arguments) {
    Result<CapturedRun> run = runCapturingOutput(program, arguments, longestOutput);
    if (!run)
        return run.failure();
    if (!run->end.bySignal && run->end.code == exitCancelled)
        return DialogAnswer();
    if (run->end.bySignal || run->end.code != exitChosen)
        return Failure{Reason::unsupported, program + " shows no dialogue"};
    return pathWritten(program, std::move(run->output));
}

// The title is joined to its option, so that one that begins with "-" stays a title. These programs write
// several paths in forms that cannot be told from one path, so they are asked for one only.

Result<DialogAnswer> askZenity(const DialogQuestion& question) {
    std::vector<std::string> arguments{"--file-selection"};
    if (question.forFolder)
        arguments.push_back("--directory");
    arguments.push_back("--title=" + question.title);
    return askProgram("zenity", arguments);
}

Result<DialogAnswer> askKdialog(const DialogQuestion& question) {
    return askProgram("kdialog", {"--title=" + question.title,
                                  question.forFolder ? "--getexistingdirectory" : "--getopenfilename"});
}

/// The portal first: it shows the dialogue of the desktop that is running.
constexpr std::array means = {askPortal, askZenity, askKdialog};

} // namespace

Result<DialogAnswer> askAtDesktop(const DialogQuestion& question) {
    if (!isDisplayKnown())
        return Failure{Reason::unsupported, "no display is known"};
    Result<DialogAnswer> answer = Failure{Reason::unsupported, "no means to ask"};
    for (const auto ask : means)
        if (answer = ask(question); answer)
            break;
    return answer;
}

} // namespace kestrine

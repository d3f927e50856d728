#include "platform/appkit/DesktopDialog.h"

#include "platform/appkit/PortalFileChooser.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/process/CapturedRun.h"
#include "platform/host/process/Environment.h"
#include "platform/host/process/Locale.h"

#include <array>

namespace kestrine {

namespace {

/// Limit for the output of a dialogue program: more than any path of the system needs.
constexpr std::size_t maxOutput = 64 * 1024;

// Exit statuses that zenity and kdialog share; all others mean that no dialogue could be shown.
constexpr int exitChosen = 0;
constexpr int exitCancelled = 1;

bool isDisplayKnown() {
    const Environment environment = Environment::ofProcess();
    const auto isNamed = [&](const char* variable) {
        return !environment.variable(variable).value_or("").empty();
    };
    return isNamed("DISPLAY") || isNamed("WAYLAND_DISPLAY");
}

/// The path that a program wrote: its output without the newline at the end.
Result<DialogAnswer> pathWritten(const std::string& program, std::string output) {
    if (output.ends_with('\n'))
        output.pop_back();
    if (!output.starts_with('/') || output.find('\0') != std::string::npos)
        return Failure{Reason::malformed, program + " did not print a path"};
    return DialogAnswer(std::move(output));
}

Result<DialogAnswer> askProgram(const std::string& program, const std::vector<std::string>& arguments) {
    // The title and the answer may contain any characters, which a program in another encoding could not read
    // or print.
    CapturedRun run = TRY(runCapturingOutput(program, arguments, maxOutput, changesForUTF8()));
    if (!run.end.bySignal && run.end.code == exitCancelled)
        return DialogAnswer();
    if (run.end.bySignal || run.end.code != exitChosen)
        return Failure{Reason::unsupported, program + " shows no dialogue"};
    return pathWritten(program, std::move(run.output));
}

// The title and its option are one argument, so that a title that begins with "-" is not read as an option.
// The output of these programs for several paths could also be one path, so they are asked for only one.

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

/// The portal is first because it shows the dialogue of the running desktop.
constexpr std::array means = {askPortal, askZenity, askKdialog};

/// Refuses a path at which nothing exists: a dialogue may return one for a name that it cannot encode.
Result<void> checkAnswer(const DialogQuestion& question, const DialogAnswer& answer) {
    const bool isFound = !answer || (question.forFolder ? folderExists(*answer) : itemExists(*answer));
    if (!isFound)
        return Failure{Reason::notFound, "the dialogue names something that does not exist"};
    return {};
}

Result<DialogAnswer> askBy(Result<DialogAnswer> (*ask)(const DialogQuestion&),
                           const DialogQuestion& question) {
    DialogAnswer answer = TRY(ask(question));
    TRY(checkAnswer(question, answer));
    return answer;
}

} // namespace

Result<DialogAnswer> askAtDesktop(const DialogQuestion& question) {
    if (!isDisplayKnown())
        return Failure{Reason::unsupported, "no display is known"};
    Result<DialogAnswer> answer = Failure{Reason::unsupported, "no means to ask"};
    for (const auto ask : means)
        if (answer = askBy(ask, question); answer)
            break;
    return answer;
}

} // namespace kestrine

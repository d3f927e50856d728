// kestrinectl: manages presets, converts many pictures, shows EXIF data.
// Exit status: 0 success, 1 something failed, 2 the arguments are wrong, 128 + N stopped by signal N.

#include "kestrinectl/CommandError.h"
#include "kestrinectl/CommandHelp.h"
#include "kestrinectl/Version.h"
#include "kestrinectl/compare/CompareCommand.h"
#include "kestrinectl/convert/ConvertCommand.h"
#include "kestrinectl/desktop/DesktopCommand.h"
#include "kestrinectl/inspect/DoctorCommand.h"
#include "kestrinectl/inspect/ExifCommand.h"
#include "kestrinectl/inspect/ExplainCommand.h"
#include "kestrinectl/sets/SetsCommand.h"
#include "kestrinectl/shards/MergeCommand.h"
#include "kestrinectl/shards/PlanCommand.h"
#include "kestrinectl/shards/RunCommand.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/Words.h"
#include "kestrinectl/undo/UndoCommand.h"
#include "platform/host/process/StandardOutput.h"
#include "platform/host/process/StandardStreams.h"

#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>

namespace {

constexpr int failed = 1;
constexpr int wrongArguments = 2;

int run(int count, char** values) {
    CLI::App program("Manages the presets that kestrine applies, converts many pictures, shows EXIF data.",
                     "kestrinectl");
    kestrine::useHelpLayout(program);
    program.set_version_flag("-V,--version", std::string("kestrinectl ") + kestrine::programVersion(),
                             "Print the version and exit");
    program.require_subcommand(1);
    kestrine::addSetsCommand(program);
    kestrine::addPreviewCommand(program);
    kestrine::addConvertCommand(program);
    kestrine::addPlanCommand(program);
    kestrine::addRunCommand(program);
    kestrine::addMergeCommand(program);
    kestrine::addCompareCommand(program);
    kestrine::addUndoCommand(program);
    kestrine::addHistoryCommand(program);
    kestrine::addExplainCommand(program);
    kestrine::addExifCommand(program);
    kestrine::addDesktopCommand(program);
    kestrine::addDoctorCommand(program);
    kestrine::addHelpCommand(program);
    try {
        program.parse(kestrine::markedWords(count, values));
    } catch (const CLI::Success& helpOrVersion) {
        program.exit(helpOrVersion);
    } catch (const CLI::ParseError& error) {
        kestrine::printError(kestrine::complaintAbout(program, {values + 1, values + count}, error));
        return wrongArguments;
    }
    if (!std::cout.flush())
        throw kestrine::CommandError("the output could not be written");
    return 0;
}

int runWithMessages(int count, char** values) {
    try {
        return run(count, values);
    } catch (const kestrine::CommandError& error) {
        kestrine::printError(error.what());
        return error.status();
    } catch (const std::exception& error) {
        kestrine::printError(error.what());
        return failed;
    }
}

/// Ends the process when there is no memory for anything else, not even for exceptions and messages.
[[noreturn]] void endWithoutMemory() {
    kestrine::StandardOutput(STDERR_FILENO).write("kestrinectl: not enough memory\n");
    std::_Exit(failed);
}

} // namespace

int main(int count, char** values) {
    kestrine::prepareStandardStreams();
    std::set_terminate(endWithoutMemory);
    try {
        return runWithMessages(count, values);
    } catch (const std::bad_alloc&) {
        endWithoutMemory();
    }
}

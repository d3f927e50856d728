// kestrinectl: what people and scripts want beyond the quiet tool.
// Exit status: 0 success, 1 something failed, 2 wrong arguments, 128 + N stopped by signal N.

#include "kestrinectl/CommandError.h"
#include "kestrinectl/ConvertCommand.h"
#include "kestrinectl/ExifCommand.h"
#include "kestrinectl/Lines.h"
#include "kestrinectl/SetsCommand.h"
#include "kestrinectl/Words.h"
#include "platform/host/process/StandardStreams.h"

#include <iostream>

namespace {

constexpr int failed = 1;
constexpr int wrongArguments = 2;

int run(int count, char** values) {
    CLI::App program("Companion of kestrine: makes and shows the presets that kestrine applies.",
                     "kestrinectl");
    program.require_subcommand(1);
    kestrine::addSetsCommand(program);
    kestrine::addConvertCommand(program);
    kestrine::addExifCommand(program);
    try {
        program.parse(kestrine::markedWords(count, values));
    } catch (const CLI::Success& help) {
        return program.exit(help);
    } catch (const CLI::ParseError& error) {
        kestrine::printMessage(std::string(error.what()) + "; --help lists the commands and options");
        return wrongArguments;
    }
    if (!std::cout.flush())
        throw kestrine::CommandError("the output could not be written");
    return 0;
}

} // namespace

int main(int count, char** values) {
    kestrine::prepareStandardStreams();
    try {
        return run(count, values);
    } catch (const kestrine::CommandError& error) {
        kestrine::printMessage(error.what());
        return error.status();
    } catch (const std::exception& error) {
        kestrine::printMessage(error.what());
        return failed;
    }
}

// kestrinectl: what people and scripts want beyond the quiet tool.
// Exit status: 0 all well, 1 something failed, 2 the arguments are wrong.

#include "kestrinectl/CommandError.h"
#include "kestrinectl/ConvertCommand.h"
#include "kestrinectl/ExifCommand.h"
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
        std::cerr << "kestrinectl: " << error.what() << "; --help tells what there is\n";
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
    } catch (const std::exception& error) {
        std::cerr << "kestrinectl: " << error.what() << "\n";
        return failed;
    }
}

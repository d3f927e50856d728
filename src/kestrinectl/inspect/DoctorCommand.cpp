#include "kestrinectl/inspect/DoctorCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/inspect/Diagnosis.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/NonEmpty.h"
#include "kestrinectl/text/Words.h"

#include <iostream>

namespace kestrine {

namespace {

struct DoctorRequest {
    std::string folder = ".";
    bool isJSON = false;
};

void show(const DoctorRequest& request) {
    const Diagnosis system = diagnose(typedWord(request.folder));
    if (request.isJSON)
        std::cout << toJSON(system).dump(2) << "\n";
    else
        for (const std::string& line : linesOf(system))
            printLine(line);
    if (!system.presetsProblem.empty())
        throw CommandError(system.presetsProblem);
}

} // namespace

void addDoctorCommand(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("doctor", "Show what works on this system: isolation, presets, libraries, "
                                         "trash; and what to do about the rest");
    auto request = std::make_shared<DoctorRequest>();
    command
        ->add_option("FOLDER", request->folder,
                     "Say where originals of this folder go when they are replaced (default: the "
                     "current folder)")
        ->check(nonEmpty());
    command->add_flag("--json", request->isJSON, "Print one JSON object");
    command->callback([request] { show(*request); });
}

} // namespace kestrine

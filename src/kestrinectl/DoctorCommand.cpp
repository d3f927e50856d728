#include "kestrinectl/DoctorCommand.h"

#include "kestrinectl/DecoderIsolation.h"
#include "kestrinectl/Messages.h"

#include <algorithm>

namespace kestrine {

namespace {

void showLayers() {
    printLine("isolation of the decoders:");
    const std::vector<IsolationLayer> layers = isolationLayers();
    for (const IsolationLayer& layer : layers)
        printLine("  " + layer.name + ": " + (layer.isInForce ? "in force" : "missing") + " (" + layer.purpose
                  + ")");
    if (!std::ranges::all_of(layers, &IsolationLayer::isInForce))
        printLine(
            "  The kernel lacks the missing layers, or a container forbids them. Pictures are converted "
            "without them, unless --isolation strict is given.");
}

} // namespace

void addDoctorCommand(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("doctor", "Show which layers isolate the decoders of pictures");
    command->callback(showLayers);
}

} // namespace kestrine

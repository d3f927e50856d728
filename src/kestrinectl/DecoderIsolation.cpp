#include "kestrinectl/DecoderIsolation.h"

#include "kestrinectl/CommandError.h"

namespace kestrine {

namespace {

void throwUnlessAllLayersAreInForce() {
    std::string missing;
    for (const IsolationLayer& layer : isolationLayers())
        if (!layer.isInForce)
            missing += (missing.empty() ? "" : ", ") + layer.name;
    if (!missing.empty())
        throw CommandError(
            "the system cannot isolate the decoders completely (missing: " + missing
            + "); 'kestrinectl doctor' shows what is missing, --isolation auto goes on without");
}

} // namespace

std::optional<IsolationChoice> isolationNamed(const std::string& name) {
    if (name == "auto")
        return IsolationChoice::automatic;
    if (name == "strict")
        return IsolationChoice::strict;
    return name == "off" ? std::optional(IsolationChoice::off) : std::nullopt;
}

DecoderIsolation::DecoderIsolation(IsolationChoice choice, unsigned jobs) {
    if (choice == IsolationChoice::off)
        return;
    const bool isStrict = choice == IsolationChoice::strict;
    isolated_.emplace(isStrict ? Isolation::strict : Isolation::automatic, jobs);
    if (isStrict)
        throwUnlessAllLayersAreInForce();
}

std::vector<IsolationLayer> isolationLayers() {
    const Result<SandboxLayers> found = IsolatedDecoding::layers();
    const SandboxLayers layers = found ? *found : SandboxLayers{};
    return {{"worker process", "a decoder that crashes or hangs costs one file", found.ok()},
            {"resource limits", "a decoder cannot use up the memory", layers.limits},
            {"Landlock", "a decoder cannot open files or networks by name", layers.landlock},
            {"system call filter", "a decoder can only compute, and read and write open files",
             layers.systemCalls}};
}

} // namespace kestrine

#include "kestrinectl/DecoderIsolation.h"

#include "_MyClasses/Class/ExifTag/ExifQuestions.h"
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
    nursery_.emplace(pictureWorker(exifQuestions));
    if (isStrict)
        throwUnlessAllLayersAreInForce();
    engine_.emplace(exifQuestions, isStrict ? Isolation::strict : Isolation::automatic, jobs);
    PictureEngine::setCurrent(&*engine_);
}

DecoderIsolation::~DecoderIsolation() { PictureEngine::setCurrent(nullptr); }

std::vector<IsolationLayer> isolationLayers() {
    const Result<std::unique_ptr<WorkerProcess>> worker =
        WorkerProcess::start(pictureWorker(exifQuestions), 0);
    const SandboxLayers layers = worker ? (*worker)->layers() : SandboxLayers{};
    return {{"worker process", "a decoder that crashes or hangs costs one file", worker.ok()},
            {"resource limits", "a decoder cannot use up the memory", layers.limits},
            {"Landlock", "a decoder cannot open files or networks by name", layers.landlock},
            {"system call filter", "a decoder can only compute, and read and write open files",
             layers.systemCalls}};
}

} // namespace kestrine

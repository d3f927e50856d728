#include "platform/imageio/worker/WorkerEngine.h"

#include "platform/host/process/AvailableMemory.h"
#include "platform/imageio/worker/Service.h"

namespace kestrine {

namespace {

/// Address space beside what pictures take: stacks and heaps of threads.
constexpr std::uint64_t addressSpaceOfThreads = std::uint64_t{2} << 30;

Result<std::unique_ptr<WorkerProcess>> startWithAllLayers(const WorkerProgram& program,
                                                          std::uint32_t libraries) {
    std::unique_ptr<WorkerProcess> process = TRY(WorkerProcess::start(program, libraries));
    if (!process->layers().all())
        return Failure{Reason::refused, "the system cannot isolate the decoders completely"};
    return process;
}

} // namespace

WorkerProgram pictureWorker(std::span<const FileQuestion> questions) {
    return {.prepareCopies = openCommonLibraries,
            .prepare = openLibraries,
            .serve = [questions](MessageSocket& requests) { worker::Service(questions).serve(requests); },
            .limits = {.addressSpace = installedMemory() + addressSpaceOfThreads}};
}

WorkerEngine::WorkerEngine(std::span<const FileQuestion> questions, Isolation isolation,
                           unsigned usualWorkers)
    : parts_(std::make_shared<worker::EngineParts>(
        [program = pictureWorker(questions), isolation](std::uint32_t libraries) {
            return isolation == Isolation::strict ? startWithAllLayers(program, libraries)
                                                  : WorkerProcess::start(program, libraries);
        },
        usualWorkers, questions, isolation == Isolation::automatic)) {}

WorkerEngine::~WorkerEngine() { parts_->pool.close(); }

Result<std::shared_ptr<Source>> WorkerEngine::open(std::shared_ptr<const ByteReader> file,
                                                   FileQuestion question) {
    const ImageCodec* codec = TRY(knownCodecFor(*file));
    return worker::RemoteSource::open(parts_, std::move(file), *codec, question);
}

Result<Bytes> WorkerEngine::answer(std::shared_ptr<const ByteReader> file, FileQuestion question) {
    return worker::answerOfWorker(*parts_, std::move(file), question);
}

} // namespace kestrine

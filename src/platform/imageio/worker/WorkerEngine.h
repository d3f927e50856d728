// WorkerEngine: decodes files in processes that can open nothing, start nothing and reach nothing.
#pragma once

#include "platform/host/process/WorkerProgram.h"
#include "platform/imageio/PictureEngine.h"
#include "platform/imageio/worker/RemoteSource.h"

namespace kestrine {

/// Whether files are decoded in this process when the system offers less than it should.
enum class Isolation {
    automatic, ///< layers that the system lacks are done without; without processes, decodes in this one
    strict,    ///< fails with reason "refused" unless all layers are in force
};

/// What a worker for pictures does, and what it may use. `questions` lists the questions that sources
/// answer; it must outlive the program.
WorkerProgram pictureWorker(std::span<const FileQuestion> questions);

/// Starts no process before the first picture. Its workers end with it. Sources may outlive it: they are then
/// decoded in this process, or fail if the engine was strict.
class WorkerEngine final : public PictureEngine {
public:
    /// `usualWorkers`: how many files are converted at the same time. More than one thread may use the engine
    /// only while a WorkerNursery with pictureWorker() exists. In a forked copy of the process, it starts its
    /// own workers.
    WorkerEngine(std::span<const FileQuestion> questions, Isolation isolation, unsigned usualWorkers);

    ~WorkerEngine() override;
    WorkerEngine(const WorkerEngine&) = delete;
    WorkerEngine& operator=(const WorkerEngine&) = delete;

    Result<std::shared_ptr<Source>> open(std::shared_ptr<const ByteReader> file,
                                         FileQuestion question) override;
    Result<Bytes> answer(std::shared_ptr<const ByteReader> file, FileQuestion question) override;

private:
    const std::shared_ptr<worker::EngineParts> parts_;
};

} // namespace kestrine

// IsolatedDecoding: decodes all pictures of this process in worker processes.
#pragma once

#include "platform/host/process/WorkerNursery.h"
#include "platform/imageio/worker/WorkerEngine.h"

#include <optional>
#include <string>

namespace kestrine {

/// From its construction to its destruction, all files are decoded in workers. At most one at a time; made
/// and destroyed while no other thread uses pictures. Pictures that were opened before are not affected;
/// those opened meanwhile are decoded in this process afterwards, or fail if `isolation` is strict.
class IsolatedDecoding {
public:
    /// Workers are copies of this process. It must have only one thread when this object is constructed, and
    /// the workers end at the latest when this thread ends. `usualWorkers`: how many files are converted at
    /// the same time; with 1, only this thread may use pictures.
    IsolatedDecoding(Isolation isolation, unsigned usualWorkers);
    /// Workers come from the program `kestrine-worker` at the path `helper`. For processes with any number of
    /// threads, and their forked copies, which start their own helper. A helper that has ended is started
    /// again. If it cannot be started, pictures are decoded in this process, or fail if `isolation` is
    /// strict.
    IsolatedDecoding(Isolation isolation, unsigned usualWorkers, const std::string& helper);
    ~IsolatedDecoding();
    IsolatedDecoding(const IsolatedDecoding&) = delete;
    IsolatedDecoding& operator=(const IsolatedDecoding&) = delete;

    /// Starts a worker to find out which layers are in force. Fails if none can be started.
    static Result<SandboxLayers> layers();

private:
    const std::optional<WorkerNursery>
        nursery_; ///< outlives the engine; a program with one thread needs none
    WorkerEngine engine_;
};

} // namespace kestrine

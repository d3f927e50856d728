// WorkerPool: the workers of an engine, and which source each of them has open.
#pragma once

#include "platform/host/files/MemoryFile.h"
#include "platform/host/process/WorkerProcess.h"
#include "platform/imageio/worker/Messages.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace kestrine::worker {

/// Starts a worker with the libraries of some codecs.
using WorkerStart = std::function<Result<std::unique_ptr<WorkerProcess>>(std::uint32_t libraries)>;

/// A request to be delivered, and the limits of its answer.
struct Errand {
    const Request& request;
    std::uint32_t libraries;  ///< that the source needs
    int file;                 ///< the descriptor of the source
    int resultFile;           ///< the descriptor of the file that gets the result; -1 if it is the answer
    std::uint64_t maxContent; ///< maximum length of the content of the answer, in bytes
    AnswerLimits limits;
};

/// Whether a request reached a worker. If not, it can be carried out elsewhere.
struct Delivery {
    bool isDelivered;
    Result<Response> response; ///< the failure of starting a worker if nothing was delivered
};

/// Any thread. Each exchange has a worker for itself, so there are as many workers as threads need at the
/// same time, and up to `usualWorkers` stay when they need fewer. A source stays open in the worker that had
/// it last, as long as no other source needs that worker; it is opened anew in another one. In a forked copy
/// of the process, the pool never uses the inherited workers, and starts its own.
class WorkerPool {
public:
    WorkerPool(WorkerStart start, unsigned usualWorkers)
        : start_(std::move(start)), usualWorkers_(usualWorkers) {}

    /// Fails with crashed or timeLimit if the worker had to be given up, or if its answer was invalid.
    Delivery exchange(const Errand& errand);

    /// No further request for the source will follow. `frees`: the worker has memory for it, to be freed now.
    void forget(std::uint64_t source, bool frees) noexcept;

    /// Ends all workers. From now on nothing is delivered.
    void close();

private:
    struct Worker {
        std::unique_ptr<WorkerProcess> process;
        MemoryFile shared;
        std::uint64_t source = 0; ///< that it has open; 0 if none that is still needed
    };
    using Workers = std::vector<Worker>;

    /// An idle worker, or a new one.
    Result<Worker> take(std::uint64_t source, std::uint32_t libraries);
    Result<Worker> started(std::uint32_t libraries) const;
    /// The idle worker that has the source open, if its memory is to be freed.
    std::optional<Worker> workerToFree(std::uint64_t source, bool frees);
    void giveBack(Worker worker);
    /// The idle worker that suits best; end() if a new one should be started. Needs the mutex.
    Workers::iterator suitable(std::uint64_t source, std::uint32_t libraries);

    const WorkerStart start_;
    const unsigned usualWorkers_;
    std::mutex mutex_;
    Workers idle_;                ///< guarded by mutex_, as the following; the one used last is at the end
    std::uint32_t libraries_ = 0; ///< that were ever needed
    bool isClosed_ = false;
    std::atomic<unsigned> busy_ = 0; ///< exchanges that have a worker, or are about to get one
};

} // namespace kestrine::worker

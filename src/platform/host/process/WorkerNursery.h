// WorkerNursery: starts workers for a process with several threads, which cannot safely copy itself.
#pragma once

#include "platform/host/process/ForkedWorker.h"

#include <memory>
#include <mutex>
#include <optional>

namespace kestrine {

/// The connection with the nursery's process: a child with one thread that starts and ends workers. Any
/// thread; one request at a time. It stays valid after the WorkerNursery is destroyed, but then it cannot
/// start workers.
class NurseryConnection {
public:
    NurseryConnection(MessageSocket socket, std::optional<pid_t> process)
        : socket_(std::move(socket)), process_(process) {}

    /// As forkWorker(), but the worker is a child of the nursery's process.
    Result<ForkedWorker> startWorker(std::uint32_t modules);

    /// As endChild(), for a worker that startWorker() returned.
    void endWorker(pid_t worker);

    void endNursery() const {
        if (process_)
            endChild(*process_);
    }

private:
    std::mutex mutex_; ///< held from a request to its answer
    MessageSocket socket_;
    const std::optional<pid_t> process_; ///< of the nursery; empty if it could not be started
};

/// While it exists, WorkerProcess::start() starts all workers of this process through it, on all threads. At
/// most one may exist at a time. It must be constructed and destroyed while no other thread uses workers. Its
/// process and all workers end at the latest when the thread that constructed it ends.
class WorkerNursery {
public:
    /// To be called while this process has one thread. If no process can be started, WorkerProcess::start()
    /// fails while this object exists.
    explicit WorkerNursery(const WorkerProgram& program);
    ~WorkerNursery();
    WorkerNursery(const WorkerNursery&) = delete;
    WorkerNursery& operator=(const WorkerNursery&) = delete;

    /// The connection of the existing nursery; null if none exists.
    static std::shared_ptr<NurseryConnection> connection();
};

} // namespace kestrine

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

    /// Does the same as forkWorker(), but the worker is a child of the nursery's process.
    Result<ForkedWorker> startWorker(std::uint32_t modules);

    /// Does the same as endChild(), for a worker that startWorker() returned.
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
/// most one may exist at a time. It must be constructed and destroyed while no other thread uses workers. If
/// its process cannot be started, WorkerProcess::start() fails while this object exists.
class WorkerNursery {
public:
    /// The nursery is a copy of this process, which must have one thread. It and all workers end at the
    /// latest when this thread ends.
    explicit WorkerNursery(const WorkerProgram& program);
    /// The nursery is the program at the path `helper`, which calls runAsNursery(). For processes with any
    /// number of threads. It and all workers end at the latest when this process ends.
    explicit WorkerNursery(const std::string& helper);
    ~WorkerNursery();
    WorkerNursery(const WorkerNursery&) = delete;
    WorkerNursery& operator=(const WorkerNursery&) = delete;

    /// The connection of the existing nursery; null if none exists.
    static std::shared_ptr<NurseryConnection> connection();

private:
    static void connect(MessageSocket socket, pid_t process);
};

/// What a helper program does: serves the process that started it, until that has no WorkerNursery any more.
/// The workers run `program`.
void runAsNursery(const WorkerProgram& program);

} // namespace kestrine

// WorkerNursery: starts workers for a process with several threads, which cannot safely copy itself.
#pragma once

#include "platform/host/process/ForkedWorker.h"
#include "platform/host/process/OwnProcess.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace kestrine {

/// The connection with the nursery's process: a child with one thread that starts and ends workers. Any
/// thread; one request at a time. It stays valid after the WorkerNursery is destroyed, but then it cannot
/// start workers. In a forked copy of the process that made it, it sends nothing, so it starts and ends no
/// process.
class NurseryConnection {
public:
    NurseryConnection(MessageSocket socket, std::optional<pid_t> process)
        : socket_(std::move(socket)), process_(process) {}

    /// Does the same as forkWorker(), but the worker is a child of the nursery's process.
    Result<ForkedWorker> startWorker(std::uint32_t modules);

    /// Does the same as endChild(), for a worker that startWorker() returned.
    void endWorker(pid_t worker);

    /// Whether it belongs to this process and the nursery's process has not ended.
    bool isUsable() const { return process_ && owner_.isCurrent() && socket_.isConnected(); }

    /// Ends the nursery's process, or only reaps it if it has ended. Its workers end with it.
    void endNursery() const {
        if (process_ && owner_.isCurrent())
            endChild(*process_);
    }

private:
    const OwnProcess owner_;
    std::mutex mutex_; ///< held from a request to its answer
    MessageSocket socket_;
    const std::optional<pid_t> process_; ///< of the nursery; empty if it could not be started
};

/// While it exists, WorkerProcess::start() starts all workers of this process through it, on all threads. At
/// most one may exist at a time. It must be constructed and destroyed while no other thread uses workers. If
/// its process cannot be started, WorkerProcess::start() fails.
class WorkerNursery {
public:
    /// The nursery is a copy of this process, which must have one thread. It and all workers end at the
    /// latest when this thread ends. Once it has ended, and in forked copies of this process, no worker is
    /// started.
    explicit WorkerNursery(const WorkerProgram& program);
    /// The nursery is the program at the path `helper`, which calls runAsNursery(). For processes with any
    /// number of threads. It and all workers end at the latest when this process and its forked copies have
    /// ended. If the program does not run when a worker is needed, it is started again. So a forked copy gets
    /// its own nursery, provided that no other thread used workers during the fork.
    explicit WorkerNursery(std::string helper);
    ~WorkerNursery();
    WorkerNursery(const WorkerNursery&) = delete;
    WorkerNursery& operator=(const WorkerNursery&) = delete;

    /// The connection of the existing nursery, renewed if necessary and possible; null if no nursery exists.
    /// Any thread.
    static std::shared_ptr<NurseryConnection> connection();

private:
    std::shared_ptr<NurseryConnection> renewedConnection() const;

    const std::optional<std::string> helper_; ///< empty if the nursery is a copy of this process
    mutable std::mutex mutex_;
    mutable std::shared_ptr<NurseryConnection> connection_; ///< guarded by mutex_; never null
};

/// What a helper program does: serves the process that started it as long as that has a WorkerNursery. The
/// workers run `program`.
void runAsNursery(const WorkerProgram& program);

} // namespace kestrine

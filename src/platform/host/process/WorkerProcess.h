// WorkerProcess: a process that handles untrusted bytes for this process, and may crash.
#pragma once

#include "platform/host/process/WorkerNursery.h"

#include <chrono>
#include <memory>
#include <optional>
#include <time.h>

namespace kestrine {

/// The time limits of an answer. Slow disks and busy machines do not count towards them.
struct AnswerLimits {
    std::chrono::milliseconds processorTime;   ///< of all threads of the worker
    std::chrono::milliseconds withoutProgress; ///< while it neither uses processor time nor waits for a disk
    bool isQuick = false;                      ///< whether the answer is expected within microseconds
};

/// The parent's handle of a worker. The destructor ends the worker. Used by one thread at a time. A forked
/// copy of the process that made it cannot use the worker and does not end it.
class WorkerProcess {
public:
    /// Starts a worker. It inherits only the connection to this object, and ends at the latest when the
    /// thread that started it ends. In a process with several threads, a WorkerNursery with the same program
    /// must exist, which then starts the worker.
    static Result<std::unique_ptr<WorkerProcess>> start(const WorkerProgram& program, std::uint32_t modules);

    ~WorkerProcess();
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;

    /// Sends a request and waits for the answer. Fails with crashed if the worker ends before it answers, and
    /// with timeLimit if it takes too long. After any failure the worker has ended, and all memory it used is
    /// free again.
    Result<Bytes> exchange(ByteView request, std::span<const int> files, const AnswerLimits& limits);

    /// Whether the worker still runs; false in a forked copy.
    bool isAlive() const;

    /// Waits until the worker is in its sandbox. Returns no layers if it ended before.
    SandboxLayers layers();

    /// The argument of start().
    std::uint32_t modules() const { return modules_; }

private:
    WorkerProcess(ForkedWorker worker, std::shared_ptr<NurseryConnection> nursery, std::uint32_t modules);

    Result<Bytes> answerTo(ByteView request, std::span<const int> files, const AnswerLimits& limits);
    Result<void> waitForMessage(const AnswerLimits& limits) const;
    Result<Bytes> received() const;
    std::chrono::nanoseconds processorTime() const;
    /// Whether this process made the worker and has not ended it.
    bool isOurs() const { return !hasEnded_ && owner_.isCurrent(); }
    void end();

    const OwnProcess owner_;
    MessageSocket socket_;
    pid_t process_;
    std::shared_ptr<NurseryConnection> nursery_; ///< the worker's parent; null if it is this process
    std::optional<clockid_t> clock_;             ///< of the processor time that the worker used
    std::uint32_t modules_;
    std::optional<SandboxLayers> layers_; ///< once the first message was received
    bool hasEnded_ = false;
};

} // namespace kestrine

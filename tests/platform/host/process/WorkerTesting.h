// A worker for tests: it does what the first byte of a request orders.
#pragma once

#include "platform/host/process/WorkerProcess.h"

#include <sys/types.h>

namespace kestrine::testing {

enum class Order : std::uint8_t {
    // The answer is the rest of the message, or what was asked for.
    echo,
    preparedModules,
    ownProcess,           ///< four bytes
    processOfPreparation, ///< four bytes: where prepareCopies() ran
    countDescriptors,
    countFiles,    ///< the regular files among the descriptors
    copyFile,      ///< from the first descriptor sent to the second
    workForAWhile, ///< uses 400 ms of processor time
    endAfterAnswer,
    // Attempts, answered with the error number, or 0 when they succeed.
    openFile,
    examineFile,
    openSocket,
    startProgram,
    forkProcess,
    signalParent,
    signalParentThread,
    traceParent,
    mapExecutable,
    makeExecutable,
    startThread,
    allocate100MB,
    allocate100GB,
    readClock,
    throwAndCatch,
    sortMuch,
    askForProcessors,
    damageMemory,
    callX32Interface,   ///< only on x86-64
    call32BitInterface, ///< only on x86-64
    // Not answered.
    writeToNull,
    abort,
    overflowTheStack,
    throwOutOfServe,
    endQuietly,
    loopForEver,
    sleepForEver,
};

constexpr std::uint8_t order(Order order) { return static_cast<std::uint8_t>(order); }

/// Limits that no test reaches.
inline constexpr AnswerLimits amplyLimited{std::chrono::minutes{5}, std::chrono::minutes{5}};

WorkerProgram workerProgram(UnlistedCalls unlisted = UnlistedCalls::refused,
                            std::uint64_t addressSpace = std::uint64_t{2} << 30);

/// A worker with the modules 5; see workerProgram().
std::unique_ptr<WorkerProcess> startWorker(UnlistedCalls unlisted = UnlistedCalls::refused);

/// The first byte of the answer, or 255 if the worker ended without one.
int answerTo(WorkerProcess& worker, Order order);

/// Makes this process the parent of orphans, so that it can wait for their end. Returns false if the system
/// does not allow that.
bool adoptsOrphans();

/// The number of the worker's process, or of the one that `order` asks for.
pid_t processOf(WorkerProcess& worker, Order order = Order::ownProcess);

struct ParentAndWorker {
    pid_t parent, worker;
};

/// Starts a process that waits for a worker that sleeps for ever; it also has a nursery if that is wanted.
ParentAndWorker startParentOfASleepingWorker(bool hasNursery);

} // namespace kestrine::testing

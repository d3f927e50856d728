#include "platform/host/process/WorkerProcess.h"

#include "platform/host/process/DiskWait.h"

#include <algorithm>
#include <utility>

namespace kestrine {

namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

/// The interval at which the times of a working process are compared with their limits.
constexpr milliseconds longestPause{100};

Failure timeFailure() { return {Reason::timeLimit, "the worker process took too long"}; }

Failure crashFailure() { return {Reason::crashed, "the worker process crashed"}; }

} // namespace

Result<std::unique_ptr<WorkerProcess>> WorkerProcess::start(const WorkerProgram& program,
                                                            std::uint32_t modules) {
    std::shared_ptr<NurseryConnection> nursery = WorkerNursery::connection();
    ForkedWorker worker = TRY(nursery ? nursery->startWorker(modules) : forkWorker(program, modules));
    return std::unique_ptr<WorkerProcess>(new WorkerProcess(std::move(worker), std::move(nursery), modules));
}

WorkerProcess::WorkerProcess(ForkedWorker worker, std::shared_ptr<NurseryConnection> nursery,
                             std::uint32_t modules)
    : socket_(std::move(worker.socket)), process_(worker.process), nursery_(std::move(nursery)),
      modules_(modules) {
    clockid_t clock{};
    if (::clock_getcpuclockid(process_, &clock) == 0)
        clock_ = clock;
}

WorkerProcess::~WorkerProcess() { end(); }

void WorkerProcess::end() {
    if (!isOurs())
        return;
    hasEnded_ = true;
    if (nursery_)
        nursery_->endWorker(process_);
    else
        endChild(process_);
}

bool WorkerProcess::isAlive() const { return isOurs() && socket_.isConnected(); }

nanoseconds WorkerProcess::processorTime() const {
    timespec used{};
    if (!clock_ || ::clock_gettime(*clock_, &used) != 0)
        return nanoseconds{0};
    return std::chrono::seconds{used.tv_sec} + nanoseconds{used.tv_nsec};
}

Result<Bytes> WorkerProcess::received() const {
    std::optional<Message> message = TRY(socket_.receive(false));
    if (!message)
        return crashFailure();
    return std::move(message->bytes);
}

SandboxLayers WorkerProcess::layers() {
    if (!layers_) {
        const Result<Bytes> first = isOurs() ? received() : crashFailure();
        layers_ = first && first->size() == 1 ? layersOf(first->front()) : SandboxLayers{};
    }
    return *layers_;
}

Result<void> WorkerProcess::waitForMessage(const AnswerLimits& limits) const {
    if (limits.isQuick && socket_.isMessageSoon())
        return {};
    const milliseconds pause =
        std::clamp(std::min(limits.processorTime, limits.withoutProgress), milliseconds{1}, longestPause);
    const nanoseconds before = processorTime();
    nanoseconds last = before;
    milliseconds idle{0}; // counts pauses, but not the time in which this process was stopped as well
    while (!socket_.waitForMessage(static_cast<int>(pause.count()))) {
        const nanoseconds now = processorTime();
        idle = now == last ? idle + pause : milliseconds{0};
        last = now;
        if (idle >= limits.withoutProgress && waitsForDisk(process_))
            idle = milliseconds{0};
        if (now - before > limits.processorTime || idle >= limits.withoutProgress)
            return timeFailure();
    }
    return {};
}

Result<Bytes> WorkerProcess::answerTo(ByteView request, std::span<const int> files,
                                      const AnswerLimits& limits) {
    if (const Result<void> sent = socket_.send(request, files); !sent)
        return isAlive() ? sent.failure() : crashFailure();
    TRY(waitForMessage(limits));
    if (!layers_) {
        (void)layers();
        TRY(waitForMessage(limits));
    }
    return received();
}

Result<Bytes> WorkerProcess::exchange(ByteView request, std::span<const int> files,
                                      const AnswerLimits& limits) {
    if (!isOurs())
        return crashFailure();
    Result<Bytes> answer = answerTo(request, files, limits);
    if (!answer)
        end();
    return answer;
}

} // namespace kestrine

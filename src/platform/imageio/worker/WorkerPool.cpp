#include "platform/imageio/worker/WorkerPool.h"

#include "platform/imageio/PictureEngine.h"
#include "platform/imageio/worker/Parcel.h"

#include <algorithm>
#include <array>
#include <new>

namespace kestrine::worker {

namespace {

/// The shared file keeps its memory for the next answer unless it has more bytes.
constexpr std::size_t maxKeptSharedBytes = std::size_t{1} << 20;

/// What the end of a worker means for a picture.
Failure decoderFailure(const Failure& failure) {
    switch (failure.reason) {
    case Reason::crashed:
        return decoderCrash();
    case Reason::timeLimit:
        return {Reason::timeLimit, "the decoder took too long"};
    default:
        return failure;
    }
}

/// Counts an exchange as long as it lasts.
class Busy {
public:
    explicit Busy(std::atomic<unsigned>& count) : count_(count) { ++count_; }
    ~Busy() { --count_; }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

private:
    std::atomic<unsigned>& count_;
};

bool has(const WorkerProcess& worker, std::uint32_t libraries) {
    return (libraries & ~worker.modules()) == 0;
}

/// What the worker says must make sense: one that was taken over by a hostile file may say anything.
Result<Response> responseFrom(WorkerProcess& worker, const MemoryFile& shared, const Errand& errand) {
    const Bytes message = TRY(packed({bytesOf(errand.request), {}}, shared));
    const std::array files = {errand.file, shared.number(), errand.resultFile};
    const std::span sent = std::span(files).first(errand.resultFile < 0 ? 2 : 3);
    const Bytes answer = TRY(worker.exchange(message, sent, errand.limits));
    Result<Parcel> parcel = unpacked(answer, shared, errand.maxContent);
    if (!parcel)
        return decoderCrash();
    if (parcel->content.size() > maxKeptSharedBytes)
        shared.clear();
    std::optional<Response> response = responseIn(parcel->head, std::move(parcel->content));
    if (!response)
        return decoderCrash();
    return *std::move(response);
}

} // namespace

Delivery WorkerPool::exchange(const Errand& errand) {
    const Busy busy(busy_);
    Result<Worker> worker = take(errand.request.source, errand.libraries);
    if (!worker)
        return {false, worker.failure()};
    Result<Response> response = responseFrom(*worker->process, worker->shared, errand);
    if (!response) // then the worker is of no more use
        return {true, decoderFailure(response.failure())};
    worker->source = errand.request.source;
    giveBack(*std::move(worker));
    return {true, std::move(response)};
}

WorkerPool::Workers::iterator WorkerPool::suitable(std::uint64_t source, std::uint32_t libraries) {
    const auto latest = [&](const auto& suits) {
        const auto found = std::find_if(idle_.rbegin(), idle_.rend(), [&](const Worker& worker) {
            return has(*worker.process, libraries) && suits(worker);
        });
        return found == idle_.rend() ? idle_.end() : std::prev(found.base());
    };
    for (const std::uint64_t wanted : {source, std::uint64_t{0}})
        if (const auto found = latest([&](const Worker& worker) { return worker.source == wanted; });
            found != idle_.end())
            return found;
    if (idle_.size() + busy_ <= usualWorkers_) // the caller counts as busy
        return idle_.end();
    // The source that was not used for the longest time has to give way.
    return std::ranges::find_if(idle_, [&](const Worker& worker) { return has(*worker.process, libraries); });
}

Result<WorkerPool::Worker> WorkerPool::take(std::uint64_t source, std::uint32_t libraries) {
    std::unique_lock lock(mutex_);
    if (isClosed_)
        return Failure{Reason::refused, "the worker processes have ended"};
    std::erase_if(idle_, [](const Worker& worker) { return !worker.process->isAlive(); });
    if (const auto found = suitable(source, libraries); found != idle_.end()) {
        Worker worker = std::move(*found);
        idle_.erase(found);
        return worker;
    }
    libraries_ |= libraries;
    std::optional<Worker> lacksLibraries; // ended after the lock was given up
    if (!idle_.empty() && idle_.size() + busy_ > usualWorkers_) {
        lacksLibraries = std::move(idle_.front());
        idle_.erase(idle_.begin());
    }
    const std::uint32_t all = libraries_;
    lock.unlock();
    return started(all);
}

Result<WorkerPool::Worker> WorkerPool::started(std::uint32_t libraries) const {
    MemoryFile shared = TRY(MemoryFile::create());
    Result<std::unique_ptr<WorkerProcess>> process = start_(libraries);
    if (!process) // the system may be short of processes for a moment
        process = start_(libraries);
    if (!process)
        return process.failure();
    return Worker{*std::move(process), std::move(shared)};
}

void WorkerPool::giveBack(Worker worker) {
    const std::lock_guard lock(mutex_);
    if (!isClosed_)
        idle_.push_back(std::move(worker));
}

std::optional<WorkerPool::Worker> WorkerPool::workerToFree(std::uint64_t source, bool frees) {
    const std::lock_guard lock(mutex_);
    const auto found =
        std::ranges::find_if(idle_, [&](const Worker& worker) { return worker.source == source; });
    if (found == idle_.end())
        return std::nullopt;
    found->source = 0;
    if (!frees)
        return std::nullopt;
    Worker worker = std::move(*found);
    idle_.erase(found);
    return worker;
}

void WorkerPool::forget(std::uint64_t source, bool frees) noexcept {
    const Busy busy(busy_);
    std::optional<Worker> worker = workerToFree(source, frees);
    if (!worker)
        return;
    try {
        const Request request{.source = source, .order = ForgetSource{}};
        constexpr AnswerLimits limits{std::chrono::minutes{1}, std::chrono::minutes{5}};
        const int noFile = worker->shared.number(); // a request has at least two descriptors
        if (responseFrom(*worker->process, worker->shared, {request, 0, noFile, -1, 0, limits}))
            giveBack(*std::move(worker));
    } catch (const std::bad_alloc&) {
        return; // the worker ends, which frees its memory too
    }
}

void WorkerPool::close() {
    Workers ended; // after the lock was given up
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
    ended.swap(idle_);
}

} // namespace kestrine::worker

#include "kestrinectl/convert/ForEachPosition.h"

#include "platform/coregraphics/RowsAhead.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace kestrine {

namespace {

class SharedWork {
public:
    SharedWork(std::size_t count, const std::function<void(std::size_t)>& work)
        : count_(count), work_(work) {}

    void doAll(std::size_t threads) {
        threads = std::min(threads, count_);
        if (threads <= 1)
            return doWork();
        doOnThreads(threads);
        if (exception_ != nullptr)
            std::rethrow_exception(exception_);
    }

private:
    void doOnThreads(std::size_t threads) {
        std::vector<std::jthread> others;
        try {
            while (others.size() + 1 < threads)
                others.emplace_back([this] { doOnThread(); });
        } catch (const std::exception& tooManyThreads) {
            (void)tooManyThreads;
        }
        doOnThread();
    }

    void doOnThread() {
        const OneThreadScope wholeFileToThisCore;
        try {
            doWork();
        } catch (const std::exception&) {
            const std::lock_guard lock(mutex_);
            exception_ = std::current_exception();
        }
    }

    void doWork() {
        for (std::size_t position = next_++; position < count_; position = next_++)
            work_(position);
    }

    const std::size_t count_;
    const std::function<void(std::size_t)>& work_;
    std::atomic<std::size_t> next_ = 0;
    std::mutex mutex_;
    std::exception_ptr exception_; ///< what ended a thread's work; guarded by mutex_
};

} // namespace

void forEachPosition(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& work) {
    SharedWork(count, work).doAll(threads);
}

} // namespace kestrine

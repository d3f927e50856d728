#include "kestrinectl/convert/ConvertPipeline.h"

#include "kestrinectl/GivenPaths.h"
#include "kestrinectl/convert/ForEachPosition.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/process/StopSignals.h"

#include <algorithm>

namespace kestrine {

namespace {

/// A picture between the queue and its result.
struct Task {
    ConvertInput input;
    ResizeJob job;
    std::vector<std::string> wanted;  ///< the paths of its results if they are free
    std::string own;                  ///< the path that it makes free itself; "" for none
    bool isKnown = false;             ///< whether the paths are
    std::size_t blockers = 0;         ///< how many tasks must end before
    std::vector<std::size_t> waiting; ///< tasks that wait for this one
};

class Pipeline {
public:
    Pipeline(InputQueue& queue, unsigned threads, const PictureWork& work)
        : queue_(queue), window_(std::size_t{threads} * 64), work_(work) {}

    void run(unsigned threads) {
        forEachPosition(threads, threads, [this](std::size_t) { workUntilTheEnd(); });
    }

private:
    void workUntilTheEnd() {
        try {
            while (doNext()) {
            }
        } catch (const std::exception&) {
            const std::lock_guard lock(mutex_);
            hasFailed_ = true;
            changed_.notify_all();
            throw;
        }
    }

    /// Converts the first task that may begin, or else takes a picture from the queue. False at the end.
    bool doNext() {
        std::unique_lock lock(mutex_);
        for (;;) {
            if (hasFailed_ || StopSignalsNoted::noted() != 0) {
                changed_.notify_all();
                return false;
            }
            if (!ready_.empty()) {
                const std::size_t position = *ready_.begin();
                ready_.erase(ready_.begin());
                lock.unlock();
                convert(position);
                return true;
            }
            if (!isExhausted_ && tasks_.size() < window_ && !isTaking_)
                return takeNext(lock), true;
            if (isExhausted_ && tasks_.empty())
                return false;
            changed_.wait(lock);
        }
    }

    /// One thread at a time takes from the queue, so that tasks have the order of the queue.
    void takeNext(std::unique_lock<std::mutex>& lock) {
        isTaking_ = true;
        lock.unlock();
        std::optional<InputQueue::Item> item = queue_.next();
        lock.lock();
        isTaking_ = false;
        changed_.notify_all();
        if (!item) {
            isExhausted_ = true;
            return;
        }
        const std::size_t position = taken_++;
        Task* task = nullptr;
        if (auto* input = std::get_if<ConvertInput>(&*item)) {
            task = &tasks_[position];
            task->input = std::move(*input);
            task->job = work_.job(task->input, ++pictures_);
        }
        lock.unlock();
        if (task != nullptr)
            prepare(position, *task);
        else
            work_.finding(position, std::move(std::get<ConvertResult>(*item)));
    }

    /// Finds out what the task wants; this thread alone uses it until then.
    void prepare(std::size_t position, Task& task) {
        const bool isFinished = work_.isFinished(position, task.input, task.job);
        if (!isFinished)
            for (const WantedResult& result : wantedResults(task.job))
                if (!result.path.isEmpty())
                    task.wanted.push_back(placeOf(result.path.utf8()));
        std::error_code ignored;
        const std::filesystem::path path = task.job.path.utf8();
        if (task.job.replacesFile() && std::filesystem::is_symlink(path, ignored))
            task.wanted.push_back(canonicalPath(path).native()); // it must not go before it was read
        task.own = task.job.replacesFile() ? placeOf(task.job.path.utf8()) : "";
        const std::lock_guard lock(mutex_);
        task.isKnown = true;
        if (isFinished)
            finished_.insert(position);
        claimNames();
        changed_.notify_all();
    }

    /// Claims names for tasks in the order of the queue, up to the first task whose wanted names are not
    /// known yet.
    void claimNames() {
        for (auto next = tasks_.lower_bound(claimed_); next != tasks_.end() && next->second.isKnown;) {
            const std::size_t position = next->first;
            Task& task = next->second;
            claimed_ = position + 1;
            ++next;
            if (finished_.erase(position) > 0) {
                tasks_.erase(position);
                continue;
            }
            for (const std::size_t earlier : claims_.add(position, task.wanted, task.own)) {
                tasks_.at(earlier).waiting.push_back(position);
                ++task.blockers;
            }
            if (task.blockers == 0)
                ready_.insert(position);
        }
    }

    void convert(std::size_t position) {
        Task& task = taskAt(position);
        work_.convert(position, task.input, std::move(task.job));
        const std::lock_guard lock(mutex_);
        claims_.remove(position);
        for (const std::size_t waiting : task.waiting)
            if (--tasks_.at(waiting).blockers == 0)
                ready_.insert(waiting);
        tasks_.erase(position);
        changed_.notify_all();
    }

    Task& taskAt(std::size_t position) {
        const std::lock_guard lock(mutex_);
        return tasks_.at(position);
    }

    InputQueue& queue_;
    const std::size_t window_; ///< how many tasks there may be
    const PictureWork& work_;
    std::mutex mutex_; // guards the members after it
    std::condition_variable changed_;
    std::map<std::size_t, Task> tasks_; ///< by position in the queue
    std::set<std::size_t> ready_;       ///< tasks that may begin
    std::set<std::size_t> finished_;    ///< tasks that need no conversion
    NameClaims claims_{isTaken};
    std::size_t taken_ = 0, pictures_ = 0; ///< from the queue
    std::size_t claimed_ = 0;              ///< the names of tasks before this position are claimed
    bool isTaking_ = false, isExhausted_ = false, hasFailed_ = false;
};

} // namespace

void convertAll(InputQueue& queue, unsigned threads, const PictureWork& work) {
    Pipeline(queue, threads, work).run(threads);
}

} // namespace kestrine

#include "platform/coregraphics/Crew.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace kestrine {

namespace {

thread_local std::shared_ptr<Crew> currentCrew;

} // namespace

Crew::~Crew() {
    {
        const Lock lock(mutex_);
        isWanted_ = false;
    }
    changed_.notify_all();
    for (std::thread& helper : helpers_)
        helper.join();
}

std::shared_ptr<Crew> Crew::current() { return currentCrew; }

void Crew::add(Task& task, bool isSibling) {
    const Lock lock(mutex_);
    if (!tasks_.empty())
        task.rank_ = tasks_.back()->rank_ + (isSibling ? 0 : 1);
    tasks_.push_back(&task);
    try {
        while (helpers_.size() + 1 < threads_)
            helpers_.emplace_back([this] { helpUntilTheEnd(); });
    } catch (const std::exception& noMoreThreads) { // those that there are do all the work
        (void)noMoreThreads;
    }
    changed_.notify_all();
}

void Crew::remove(Task& task) {
    Lock lock(mutex_);
    std::erase(tasks_, &task);
    changed_.wait(lock, [&task] { return task.steps_ == 0; });
}

void Crew::workUntil(Lock& lock, Task& task, const std::function<bool()>& isDone) {
    while (!isDone()) {
        const auto afterTask = std::next(std::ranges::find(tasks_, &task));
        const auto afterSiblings = std::find_if(
            afterTask, tasks_.end(), [&task](const Task* later) { return later->rank_ != task.rank_; });
        if (!doStepBefore(lock, afterTask) && !doStepBefore(lock, afterSiblings))
            changed_.wait(lock);
    }
}

/// Does a step of the last task before `end` that is ready. A thread that waits within a step goes only to
/// tasks of lower rank than that of the step. So no thread waits for itself, and threads do not wait for each
/// other.
bool Crew::doStepBefore(Lock& lock, std::vector<Task*>::iterator end) {
    const auto found = std::find_if(std::make_reverse_iterator(end), tasks_.rend(), isReady);
    if (found == tasks_.rend())
        return false;
    doStep(lock, **found);
    return true;
}

void Crew::doStep(Lock& lock, Task& task) {
    const std::size_t step = task.begin();
    ++task.steps_;
    lock.unlock();
    {
        const CrewScope noTaskIsAdded(nullptr);
        task.work(step);
    }
    lock.lock();
    --task.steps_;
    task.end(step);
    changed_.notify_all();
}

/// Prefers the first task, so that the tables and buffers of decoders stay in the cache of one core.
void Crew::helpUntilTheEnd() {
    Lock lock(mutex_);
    while (isWanted_) {
        if (const auto first = std::ranges::find_if(tasks_, isReady); first != tasks_.end())
            doStep(lock, **first);
        else
            changed_.wait(lock);
    }
}

CrewScope::CrewScope(std::shared_ptr<Crew> crew) : before_(std::exchange(currentCrew, std::move(crew))) {}

CrewScope::~CrewScope() { currentCrew = std::move(before_); }

} // namespace kestrine

// Crew: threads that share the work on one picture. The work is cut into tasks, each of which prepares rows
// or bands for the next one. A thread that has to wait for rows prepares them, or those before them, itself.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace kestrine {

/// Safe on all threads. The caller's thread is one of the crew whenever it waits in workUntil(); the other
/// threads are started with the first task. Without them, because the system cannot start any, the caller's
/// thread does everything.
class Crew {
public:
    using Lock = std::unique_lock<std::mutex>;

    /// A part of the work that is done step by step. Its steps may need results of tasks that were added
    /// before it, except its siblings, and of no others.
    class Task {
    public:
        virtual ~Task() = default;

    private:
        friend class Crew;

        /// Whether a step can begin now.
        virtual bool isReady() const = 0;
        /// Begins a step, and returns its number.
        virtual std::size_t begin() = 0;
        /// Does the work of a step. The crew is not locked, unlike for all other members. Must not throw.
        virtual void work(std::size_t step) = 0;
        virtual void end(std::size_t step) = 0;

        std::size_t steps_ = 0; ///< that are being done
        std::size_t rank_ = 0;  ///< the same for siblings; needed tasks have lower ones
    };

    /// `threads` includes that of the caller.
    explicit Crew(std::size_t threads) : threads_(threads) {}
    ~Crew();
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

    std::size_t threads() const { return threads_; }

    /// `task` must stay valid until it is removed. `isSibling`: it does not need results of the task that was
    /// added last, or of that task's siblings.
    void add(Task& task, bool isSibling = false);
    /// Returns when no step of `task` is being done. Must be called before the task is destroyed.
    void remove(Task& task);

    Lock lock() { return Lock(mutex_); }
    /// Does steps of `task`, of tasks added before it and of its siblings, until `isDone` (called with the
    /// lock).
    void workUntil(Lock& lock, Task& task, const std::function<bool()>& isDone);
    /// To be called when a step may have become ready, with the lock.
    void notify() { changed_.notify_all(); }

    /// The crew for the pictures of the current thread; null outside of every CrewScope, and in steps.
    static std::shared_ptr<Crew> current();

private:
    friend class CrewScope;

    void helpUntilTheEnd();
    bool doStepBefore(Lock& lock, std::vector<Task*>::iterator end);
    void doStep(Lock& lock, Task& task);
    static bool isReady(const Task* task) { return task->isReady(); }

    const std::size_t threads_;
    std::mutex mutex_; ///< guards all members below, and the tasks except in work()
    std::condition_variable changed_;
    std::vector<Task*> tasks_; ///< each after those whose results it needs
    bool isWanted_ = true;
    std::vector<std::thread> helpers_;
};

/// Makes `crew` (or null) the current one of this thread as long as the scope exists.
class CrewScope {
public:
    explicit CrewScope(std::shared_ptr<Crew> crew);
    ~CrewScope();
    CrewScope(const CrewScope&) = delete;
    CrewScope& operator=(const CrewScope&) = delete;

private:
    std::shared_ptr<Crew> before_;
};

} // namespace kestrine

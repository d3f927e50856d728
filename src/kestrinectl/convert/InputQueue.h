// InputQueue: what a search finds, on its way from the thread that searches to those that convert.
#pragma once

#include "kestrinectl/convert/ConvertInputs.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>
#include <variant>

namespace kestrine {

/// Any thread. Holds a limited number of items, unless all are searched first: the search waits while they
/// are not taken.
class InputQueue final : public InputReceiver {
public:
    using Item = std::variant<ConvertInput, ConvertResult>; ///< a picture, or a finding

    /// Both arguments must outlive the queue.
    InputQueue(const std::vector<std::string>& arguments, const ConvertSearch& search);
    /// Ends the search.
    ~InputQueue() override;
    InputQueue(const InputQueue&) = delete;
    InputQueue& operator=(const InputQueue&) = delete;

    /// If the arguments are a few files, searches them at once and returns true.
    bool searchIfShort();
    /// Completes the search before anything is taken. The memory for the items is not limited.
    void searchFirst();
    /// Begins the search on a thread of its own.
    void searchOnThread();

    /// The next item, in the order of the search; waits for it. nullopt after the last one.
    std::optional<Item> next();

    /// The number of pictures, at most `enough`. Waits until it is known or the queue is full.
    std::size_t countUpTo(std::size_t enough);

    /// What was found so far.
    struct Found {
        std::size_t pictures = 0;
        std::uint64_t bytes = 0; ///< of the pictures
        std::size_t otherFiles = 0;
        bool isComplete = false;
    };
    Found found() const;

    void picture(ConvertInput input) override;
    void finding(ConvertResult finding) override;
    void otherFile() override;

private:
    void search() noexcept;
    void add(Item item);
    void endIfClosed() const;

    const std::vector<std::string>& arguments_;
    const ConvertSearch& search_;
    mutable std::mutex mutex_; // guards the members after it
    std::condition_variable changed_;
    std::deque<Item> items_;
    Found found_;
    std::size_t maxWaiting_ = 50'000; ///< items; each takes about 200 bytes
    bool isClosed_ = false;           ///< no more items are taken
    std::exception_ptr exception_;    ///< what ended the search
    std::jthread thread_;
};

} // namespace kestrine

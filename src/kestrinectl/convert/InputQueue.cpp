#include "kestrinectl/convert/InputQueue.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace kestrine {

namespace {

constexpr std::size_t fewArguments = 1'000;

bool areFewFiles(const std::vector<std::string>& arguments) {
    return arguments.size() <= fewArguments
           && std::ranges::none_of(arguments, [](const std::string& argument) {
                  std::error_code ignored;
                  return std::filesystem::is_directory(argument, ignored);
              });
}

} // namespace

InputQueue::InputQueue(const std::vector<std::string>& arguments, const ConvertSearch& search)
    : arguments_(arguments), search_(search) {}

InputQueue::~InputQueue() {
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
    changed_.notify_all();
} // and joins the thread

bool InputQueue::searchIfShort() {
    if (!areFewFiles(arguments_))
        return false;
    search();
    return true;
}

void InputQueue::searchFirst() {
    {
        const std::lock_guard lock(mutex_);
        maxWaiting_ = std::numeric_limits<std::size_t>::max();
    }
    search();
}

void InputQueue::searchOnThread() {
    thread_ = std::jthread([this] { search(); });
}

void InputQueue::search() noexcept {
    std::exception_ptr exception;
    try {
        findInputs(arguments_, search_, *this);
    } catch (const std::exception&) {
        exception = std::current_exception();
    }
    const std::lock_guard lock(mutex_);
    exception_ = exception;
    found_.isComplete = true;
    changed_.notify_all();
}

std::optional<InputQueue::Item> InputQueue::next() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !items_.empty() || found_.isComplete; });
    if (items_.empty()) {
        if (exception_ != nullptr)
            std::rethrow_exception(exception_);
        return std::nullopt;
    }
    Item item = std::move(items_.front());
    items_.pop_front();
    if (items_.size() == maxWaiting_ / 2)
        changed_.notify_all();
    return item;
}

std::size_t InputQueue::countUpTo(std::size_t enough) {
    std::unique_lock lock(mutex_);
    changed_.wait(
        lock, [&] { return found_.pictures >= enough || found_.isComplete || items_.size() >= maxWaiting_; });
    return std::min(found_.pictures, enough);
}

InputQueue::Found InputQueue::found() const {
    const std::lock_guard lock(mutex_);
    return found_;
}

void InputQueue::picture(ConvertInput input) {
    {
        const std::lock_guard lock(mutex_);
        ++found_.pictures;
        found_.bytes += input.bytes;
    }
    add(std::move(input));
}

void InputQueue::finding(ConvertResult finding) { add(std::move(finding)); }

void InputQueue::otherFile() {
    const std::lock_guard lock(mutex_);
    endIfClosed();
    ++found_.otherFiles;
}

/// Ends the search if nobody takes what it finds.
void InputQueue::endIfClosed() const {
    if (isClosed_)
        throw std::runtime_error("nobody takes what is found");
}

void InputQueue::add(Item item) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return items_.size() < maxWaiting_ || isClosed_; });
    endIfClosed();
    items_.push_back(std::move(item));
    changed_.notify_all();
}

} // namespace kestrine

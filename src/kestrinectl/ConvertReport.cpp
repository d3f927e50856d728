#include "kestrinectl/ConvertReport.h"

#include <iostream>
#include <unistd.h>

namespace kestrine {

ConvertReport::ConvertReport(std::size_t count)
    : count_(count), showsProgress_(count > 1 && ::isatty(STDERR_FILENO) == 1) {
    showProgress();
}

ConvertReport::~ConvertReport() { hideProgress(); }

void ConvertReport::finished(std::size_t position, ConvertResult result) {
    const std::lock_guard lock(mutex_);
    ++done_;
    failures_ += result.complaints.empty() ? 0 : 1;
    waiting_.emplace(position, std::move(result));
    hideProgress();
    for (auto first = waiting_.find(next_); first != waiting_.end(); first = waiting_.find(++next_)) {
        print(first->second);
        waiting_.erase(first);
    }
    showProgress();
}

void ConvertReport::print(const ConvertResult& result) {
    for (const std::string& line : result.lines)
        std::cout << line << "\n";
    std::cout.flush();
    for (const std::string& complaint : result.complaints)
        std::cerr << "kestrinectl: " << complaint << "\n";
}

void ConvertReport::showProgress() const {
    if (showsProgress_)
        std::cerr << done_ << " of " << count_ << std::flush;
}

void ConvertReport::hideProgress() const {
    if (showsProgress_)
        std::cerr << "\r\033[K";
}

} // namespace kestrine

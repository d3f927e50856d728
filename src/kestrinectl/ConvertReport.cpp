#include "kestrinectl/ConvertReport.h"

#include "kestrinectl/Messages.h"
#include "platform/host/process/Terminal.h"

#include <iostream>

namespace kestrine {

namespace {

void printResult(const ConvertResult& result) {
    for (const std::string& line : result.lines)
        printLine(line);
    std::cout.flush();
    printMessages(result);
}

} // namespace

void printMessages(const ConvertResult& result) {
    for (const std::string& warning : result.warnings)
        printWarning(warning);
    for (const std::string& complaint : result.complaints)
        printError(complaint);
}

ConvertReport::ConvertReport(std::size_t count, ReportStyle style)
    : count_(count), style_(style),
      showsProgress_(count > 1 && style == ReportStyle::usual && isTerminal(OutputStream::standardError)) {
    showProgress();
}

ConvertReport::~ConvertReport() {
    hideProgress();
    for (const auto& [position, result] : waiting_)
        print(result);
}

void ConvertReport::print(const ConvertResult& result) const {
    if (style_ == ReportStyle::usual)
        return printResult(result);
    for (const std::string& complaint : result.complaints)
        printError(complaint);
}

void ConvertReport::finished(std::size_t position, ConvertResult result) {
    const std::lock_guard lock(mutex_);
    ++done_;
    failures_ += result.complaints.empty() ? 0 : 1;
    leftLying_ += result.isLeftLying ? 1 : 0;
    waiting_.emplace(position, std::move(result));
    hideProgress();
    for (auto first = waiting_.find(next_); first != waiting_.end(); first = waiting_.find(++next_)) {
        print(first->second);
        waiting_.erase(first);
    }
    showProgress();
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

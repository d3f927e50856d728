#include "kestrinectl/convert/ConvertReport.h"

#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "platform/host/process/Environment.h"
#include "platform/host/process/Terminal.h"

#include <iostream>

namespace kestrine {

namespace {

/// Whether a line can be shown and taken back.
bool canShowProgress() {
    return isTerminal(OutputStream::standardError) && Environment::ofProcess().variable("TERM") != "dumb";
}

} // namespace

void ReportStyle::addTo(CLI::App& command) {
    CLI::Option* verbose = command.add_flag_callback(
        "-v,--verbose", [this] { detail = ConvertDetail::all; },
        "Print also sizes and times, and the files that need no conversion");
    command
        .add_flag_callback(
            "-q,--quiet", [this] { detail = ConvertDetail::none; },
            "Print only errors (default: a line for each result, warnings, hints and totals)")
        ->excludes(verbose);
    command.add_flag(
        "--json", isJSON,
        "Print one JSON object per file instead of lines and messages, and a last one with totals");
}

ConvertReport::ConvertReport(ReportStyle style)
    : style_(style), hasTerminal_(style.detail != ConvertDetail::none && canShowProgress()) {}

void ConvertReport::expect(std::size_t count, std::uint64_t bytes, bool isAll) {
    const std::lock_guard lock(mutex_);
    count_ = count;
    bytes_ = bytes;
    countsAll_ = isAll;
}

void ConvertReport::end() {
    hideProgress();
    for (const auto& [position, result] : waiting_)
        print(result);
    waiting_.clear();
}

void ConvertReport::found(std::size_t position, ConvertResult finding) {
    const std::lock_guard lock(mutex_);
    totals_.add(finding);
    printInOrder(position, std::move(finding));
}

void ConvertReport::foundOthers(std::size_t count) {
    totals_.otherFiles = count;
    if (count > 0 && !style_.isJSON && style_.detail != ConvertDetail::none)
        printError(counted(count, "other file") + " left out");
}

std::chrono::milliseconds ConvertReport::elapsed() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin_);
}

void ConvertReport::print(const ConvertResult& result) const {
    if (style_.isJSON)
        std::cout << toJSON(result).dump() << "\n" << std::flush;
    else
        printResult(result, style_.detail);
}

void ConvertReport::finished(std::size_t position, ConvertResult result) {
    const std::lock_guard lock(mutex_);
    ++done_;
    bytesDone_ += result.sourceBytes;
    totals_.add(result);
    printInOrder(position, std::move(result));
}

void ConvertReport::printInOrder(std::size_t position, ConvertResult result) {
    waiting_.emplace(position, std::move(result));
    hideProgress();
    for (auto first = waiting_.find(next_); first != waiting_.end(); first = waiting_.find(++next_)) {
        print(first->second);
        waiting_.erase(first);
    }
    showProgress();
}

void ConvertReport::showProgress() {
    if (hasTerminal_ && count_ > 1)
        std::cerr << progressText({done_, count_, countsAll_, bytesDone_, bytes_, totals_.bytesBefore,
                                   totals_.bytesAfter, elapsed()})
                  << std::flush;
}

void ConvertReport::hideProgress() {
    if (hasTerminal_ && count_ > 1)
        std::cerr << "\r\033[K";
}

} // namespace kestrine

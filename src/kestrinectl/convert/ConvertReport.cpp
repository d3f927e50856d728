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

ConvertReport::ConvertReport(std::size_t count, std::uint64_t bytes, ReportStyle style)
    : count_(count), bytes_(bytes), style_(style),
      showsProgress_(count > 1 && style.detail != ConvertDetail::none && canShowProgress()) {}

void ConvertReport::end() {
    hideProgress();
    for (const auto& [position, result] : waiting_)
        print(result);
    waiting_.clear();
}

void ConvertReport::found(const std::vector<ConvertResult>& findings, std::size_t otherFiles) {
    for (const ConvertResult& finding : findings) {
        print(finding);
        totals_.add(finding);
    }
    totals_.otherFiles = otherFiles;
    if (otherFiles > 0 && !style_.isJSON && style_.detail != ConvertDetail::none)
        printError(counted(otherFiles, "other file") + " left out");
    showProgress();
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
    waiting_.emplace(position, std::move(result));
    hideProgress();
    for (auto first = waiting_.find(next_); first != waiting_.end(); first = waiting_.find(++next_)) {
        print(first->second);
        waiting_.erase(first);
    }
    showProgress();
}

void ConvertReport::showProgress() {
    if (showsProgress_)
        std::cerr << progressText(
            {done_, count_, bytesDone_, bytes_, totals_.bytesBefore, totals_.bytesAfter, elapsed()})
                  << std::flush;
}

void ConvertReport::hideProgress() {
    if (showsProgress_)
        std::cerr << "\r\033[K";
}

} // namespace kestrine

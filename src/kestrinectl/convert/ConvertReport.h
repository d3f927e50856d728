// ConvertReport: the output during and after a conversion.
#pragma once

#include "kestrinectl/convert/ConvertJSON.h"
#include "kestrinectl/convert/ConvertLines.h"
#include "kestrinectl/convert/ConvertProgress.h"

#include <CLI/CLI.hpp>
#include <map>
#include <mutex>

namespace kestrine {

struct ReportStyle {
    ConvertDetail detail = ConvertDetail::lines;
    bool isJSON = false; ///< an object per file instead of lines and messages

    /// Adds the options to a command; it writes into this object, which must outlive the parsing.
    void addTo(CLI::App& command);
};

/// Prints results in the order of the items of a run, even if they arrive in another order, and the progress
/// on a terminal. Any thread.
class ConvertReport {
public:
    explicit ConvertReport(ReportStyle style);
    ~ConvertReport() { end(); }

    /// How many files there are so far, and their length; and whether these are all.
    void expect(std::size_t count, std::uint64_t bytes, bool isAll);

    /// Reports the outcome of a file. `position` is the place of the item, counted from 0 over files and
    /// findings.
    void finished(std::size_t position, ConvertResult result);
    /// Reports what was found beside the files.
    void found(std::size_t position, ConvertResult finding);
    /// Reports how many files in folders were left out.
    void foundOthers(std::size_t count);

    /// No more items will be finished: prints the results that still wait for others, and hides the
    /// progress.
    void end();

    /// How many files were finished, and how many there were.
    std::size_t done() const { return done_; }
    std::size_t count() const { return count_; }
    const ReportStyle& style() const { return style_; }
    const ConvertTotals& totals() const { return totals_; }
    std::chrono::milliseconds elapsed() const;

private:
    void print(const ConvertResult& result) const;
    void printInOrder(std::size_t position, ConvertResult result);
    void showProgress();
    void hideProgress();

    using Clock = std::chrono::steady_clock;

    const ReportStyle style_;
    const bool hasTerminal_; ///< on which progress can be shown
    const Clock::time_point begin_ = Clock::now();
    std::mutex mutex_; // guards the members after it
    std::size_t count_ = 0;
    std::uint64_t bytes_ = 0;
    bool countsAll_ = false; ///< whether no more files will be found
    std::size_t next_ = 0;
    std::size_t done_ = 0;
    std::uint64_t bytesDone_ = 0;
    ConvertTotals totals_;
    std::map<std::size_t, ConvertResult> waiting_; ///< for an earlier result
};

} // namespace kestrine

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

/// Prints results in the order of the inputs, even if they arrive in another order, and the progress on a
/// terminal. Any thread.
class ConvertReport {
public:
    /// `count` is the number of inputs, and `bytes` their length.
    ConvertReport(std::size_t count, std::uint64_t bytes, ReportStyle style);
    ~ConvertReport() { end(); }

    /// What was found beside the inputs. Call it before the first input is finished.
    void found(const std::vector<ConvertResult>& findings, std::size_t otherFiles);

    void finished(std::size_t position, ConvertResult result);

    /// No more inputs will be finished: prints the results that still wait for others, and hides the
    /// progress.
    void end();

    /// How many inputs were finished.
    std::size_t done() const { return done_; }
    const ReportStyle& style() const { return style_; }
    const ConvertTotals& totals() const { return totals_; }
    std::chrono::milliseconds elapsed() const;

private:
    void print(const ConvertResult& result) const;
    void showProgress();
    void hideProgress();

    using Clock = std::chrono::steady_clock;

    const std::size_t count_;
    const std::uint64_t bytes_;
    const ReportStyle style_;
    const bool showsProgress_;
    const Clock::time_point begin_ = Clock::now();
    std::mutex mutex_; // guards the members after it
    std::size_t next_ = 0;
    std::size_t done_ = 0;
    std::uint64_t bytesDone_ = 0;
    ConvertTotals totals_;
    std::map<std::size_t, ConvertResult> waiting_; ///< for an earlier result
};

} // namespace kestrine

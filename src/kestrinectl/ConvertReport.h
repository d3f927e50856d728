// ConvertReport: the output during and after a conversion.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace kestrine {

/// The messages for one input.
struct ConvertResult {
    std::vector<std::string> lines;      ///< one per result, for standard output
    std::vector<std::string> warnings;   ///< for standard error; no failure
    std::vector<std::string> complaints; ///< for standard error; none when everything succeeded
    bool isLeftLying = false; ///< whether a result is not upright although the file says how to turn it
};

/// Prints the warnings and complaints.
void printMessages(const ConvertResult& result);

enum class ReportStyle : std::uint8_t {
    usual,
    quiet, ///< only complaints, no lines, warnings and progress
};

/// Prints results in the order of the inputs, even if they arrive in another order, and the progress on a
/// terminal. Any thread.
class ConvertReport {
public:
    /// `count` is the number of inputs.
    explicit ConvertReport(std::size_t count, ReportStyle style = ReportStyle::usual);
    /// Prints the results that still wait for inputs that were not finished.
    ~ConvertReport();

    void finished(std::size_t position, ConvertResult result);

    /// How many inputs were finished, and how many of them had complaints.
    std::size_t done() const { return done_; }
    std::size_t failures() const { return failures_; }
    /// How many inputs have a result that was left lying.
    std::size_t leftLying() const { return leftLying_; }

private:
    void print(const ConvertResult& result) const;
    void showProgress() const;
    void hideProgress() const;

    const std::size_t count_;
    const ReportStyle style_;
    const bool showsProgress_;
    std::mutex mutex_; // guards the members after it
    std::size_t next_ = 0;
    std::size_t done_ = 0;
    std::size_t failures_ = 0;
    std::size_t leftLying_ = 0;
    std::map<std::size_t, ConvertResult> waiting_; ///< for an earlier result
};

} // namespace kestrine

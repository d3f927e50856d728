// ConvertReport: what people read while and after their pictures are converted.
#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace kestrine {

/// What became of one input.
struct ConvertResult {
    std::vector<std::string> lines;      ///< one per result, for standard output
    std::vector<std::string> warnings;   ///< for standard error; no failure
    std::vector<std::string> complaints; ///< for standard error; none when everything succeeded
};

/// Prints results in the order of the inputs, whatever the order in which they come, and on a terminal how
/// far the work has got. Safe to use from several threads.
class ConvertReport {
public:
    /// `count` inputs are expected.
    explicit ConvertReport(std::size_t count);
    /// Prints what still waits for inputs that were never finished.
    ~ConvertReport();

    void finished(std::size_t position, ConvertResult result);

    /// How many inputs were finished, and how many of them had complaints.
    std::size_t done() const { return done_; }
    std::size_t failures() const { return failures_; }

private:
    void showProgress() const;
    void hideProgress() const;

    const std::size_t count_;
    const bool showsProgress_;
    std::mutex mutex_; // guards what follows
    std::size_t next_ = 0;
    std::size_t done_ = 0;
    std::size_t failures_ = 0;
    std::map<std::size_t, ConvertResult> waiting_; ///< for an earlier one that is not finished yet
};

} // namespace kestrine

#include "platform/coregraphics/RowsAhead.h"

#include "platform/host/Bytes.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

namespace kestrine {

namespace {

thread_local int forbiddenScopes = 0;

// Starting a thread costs about as much as decoding 20,000 pixels; below this there is nothing to win.
constexpr std::uint64_t fewestPixels = 250'000;
constexpr unsigned mostThreads = 4;
// A handful of bands lets both sides work on while the other's pace varies; a band fits the cache of a core.
constexpr std::size_t bandCount = 4;
constexpr std::size_t bandBytes = std::size_t{128} << 10;

bool mayStartThreads(const RowFormat& format) {
    static const bool hasOneCore = std::thread::hardware_concurrency() < 2;
    return !hasOneCore && forbiddenScopes == 0 && format.pixels() >= fewestPixels;
}

/// What one turn of the second thread made.
struct Band {
    Bytes rows;
    std::size_t count = 0;          ///< complete rows
    std::optional<Failure> failure; ///< in place of the row behind them
    std::exception_ptr thrown;      ///< likewise
};

/// Bands go round: the second thread fills the next one that is free, the first reads them in order.
class RowsAhead final : public RowSource {
public:
    RowsAhead(RowSourcePointer input, std::size_t rows)
        : RowSource(input->format()), input_(std::move(input)), rows_(rows),
          rowsABand_(std::max<std::size_t>(1, bandBytes / format().bytesPerRow())) {
        for (Band& band : bands_)
            band.rows.resize(rowsABand_ * format().bytesPerRow());
    }

    /// Whether the system had a thread for it; if not, `takeInput()` is all that is left to do.
    bool start() {
        try {
            thread_ = std::thread([this] { fillBands(); });
            return true;
        } catch (const std::system_error&) {
            return false;
        }
    }
    RowSourcePointer takeInput() { return std::move(input_); }

    ~RowsAhead() override {
        {
            const std::lock_guard lock(mutex_);
            isWanted_ = false;
        }
        changed_.notify_all();
        if (thread_.joinable())
            thread_.join();
    }

    bool isReadAhead() const override { return true; }

    Result<void> readRow(std::span<std::uint8_t> row) override {
        Band& band = bandToRead();
        if (nextRow_ == band.count) {
            if (band.thrown)
                std::rethrow_exception(band.thrown);
            return *band.failure;
        }
        std::memcpy(row.data(), band.rows.data() + nextRow_ * row.size(), row.size());
        ++nextRow_;
        return {};
    }

private:
    /// The band that the next row stands in, or in whose end the failure stands. A failed band is the last.
    Band& bandToRead() {
        Band* band = &bands_[read_ % bandCount];
        const bool isUsedUp = isReading_ && nextRow_ == band->count && !band->failure && !band->thrown;
        if (isReading_ && !isUsedUp)
            return *band;
        std::unique_lock lock(mutex_);
        if (isUsedUp) {
            ++read_;
            changed_.notify_all();
        }
        changed_.wait(lock, [this] { return filled_ > read_; });
        isReading_ = true;
        nextRow_ = 0;
        return bands_[read_ % bandCount];
    }

    void fillBands() {
        for (std::size_t rest = rows_; rest > 0;) {
            {
                std::unique_lock lock(mutex_);
                changed_.wait(lock, [this] { return filled_ - read_ < bandCount || !isWanted_; });
                if (!isWanted_)
                    return;
            }
            Band& band = bands_[filled_ % bandCount];
            fill(band, std::min(rest, rowsABand_));
            rest -= band.count;
            {
                const std::lock_guard lock(mutex_);
                ++filled_;
            }
            changed_.notify_all();
            if (band.failure || band.thrown)
                return;
        }
    }

    void fill(Band& band, std::size_t wanted) {
        const std::size_t size = format().bytesPerRow();
        band.count = 0;
        try {
            for (; band.count < wanted; ++band.count)
                if (Result<void> read = input_->readRow({band.rows.data() + band.count * size, size});
                    !read) {
                    band.failure = read.failure();
                    return;
                }
        } catch (...) {
            band.thrown = std::current_exception();
        }
    }

    RowSourcePointer input_; ///< of the second thread
    const std::size_t rows_; ///< that will be asked for
    const std::size_t rowsABand_;
    std::array<Band, bandCount> bands_;

    std::mutex mutex_; // guards the counts and the wish; a band belongs to one thread at a time
    std::condition_variable changed_;
    std::size_t filled_ = 0; ///< bands so far
    std::size_t read_ = 0;   ///< bands so far
    bool isWanted_ = true;

    bool isReading_ = false; ///< of the first thread: whether it holds a band
    std::size_t nextRow_ = 0;

    std::thread thread_;
};

RowSourcePointer startedAhead(RowSourcePointer input, std::size_t rows) {
    auto ahead = std::make_unique<RowsAhead>(std::move(input), rows);
    if (!ahead->start())
        return ahead->takeInput();
    return ahead;
}

/// Rows of several parts, a band of each in turn.
class RowsInTurns final : public RowSource {
public:
    RowsInTurns(std::vector<RowSourcePointer> parts, std::size_t rowsABand)
        : RowSource(parts.front()->format()), parts_(std::move(parts)), rowsABand_(rowsABand) {}

    bool isReadAhead() const override { return true; }

    Result<void> readRow(std::span<std::uint8_t> row) override {
        return parts_[next_++ / rowsABand_ % parts_.size()]->readRow(row);
    }

private:
    const std::vector<RowSourcePointer> parts_;
    const std::size_t rowsABand_;
    std::size_t next_ = 0;
};

/// How many of `rows` rows lie in the bands part, part + parts, part + 2 * parts, ...
std::size_t rowsOfPart(std::size_t rows, std::size_t rowsABand, std::size_t part, std::size_t parts) {
    const std::size_t round = rowsABand * parts;
    const std::size_t rest = rows % round, before = part * rowsABand;
    return rows / round * rowsABand + (rest <= before ? 0 : std::min(rowsABand, rest - before));
}

} // namespace

RowSourcePointer rowsAhead(RowSourcePointer input) {
    if (!mayStartThreads(input->format()) || input->isReadAhead())
        return input;
    const std::size_t rows = input->format().height;
    return startedAhead(std::move(input), rows);
}

std::size_t decodingThreads(const RowFormat& format) {
    return mayStartThreads(format) ? std::min(std::thread::hardware_concurrency(), mostThreads) : 1;
}

RowSourcePointer rowsInTurns(std::vector<RowSourcePointer> parts, std::size_t rowsABand) {
    const std::size_t rows = parts.front()->format().height;
    for (std::size_t part = 0; part < parts.size(); ++part)
        parts[part] = startedAhead(std::move(parts[part]), rowsOfPart(rows, rowsABand, part, parts.size()));
    return std::make_unique<RowsInTurns>(std::move(parts), rowsABand);
}

OneThreadScope::OneThreadScope() { ++forbiddenScopes; }

OneThreadScope::~OneThreadScope() { --forbiddenScopes; }

} // namespace kestrine

#include "platform/coregraphics/RowsAhead.h"

#include "platform/coregraphics/SlotRing.h"
#include "platform/host/Bytes.h"
#include "platform/host/process/ProcessorCount.h"

#include <algorithm>
#include <cstring>

namespace kestrine {

namespace {

thread_local int forbiddenScopes = 0;

// Starting a thread takes as long as decoding about 20,000 pixels; smaller pictures do not profit.
constexpr std::uint64_t minPixels = 250'000;
constexpr unsigned maxThreads = 4;
// Several bands let both threads continue when the speed of one varies. Together they fit the cache of a
// core.
constexpr std::size_t bandCount = 8;
constexpr std::size_t bandBytes = std::size_t{128} << 10;
// The largest band of a picture that is decoded in parts. All bands of a part together should take the rows
// that are decoded at once, so that decoding the next rows need not wait until these are used.
constexpr std::size_t maxBandBytesOfPart = std::size_t{2} << 20;

bool isWorthThreads(const RowFormat& format) { return format.pixels() >= minPixels; }

/// The rows that a thread prepares at a time.
struct Band {
    Bytes rows;
    std::size_t count = 0;     ///< of complete rows
    Interruption interruption; ///< in place of the row after them
};

class RowsAhead final : public RowSource {
public:
    /// `rows` are all that are read. For `isSibling` see Crew::add().
    RowsAhead(std::shared_ptr<Crew> crew, RowSourcePointer input, std::size_t rows, std::size_t rowsPerBand,
              bool isSibling)
        : RowSource(input->format()), input_(std::move(input)), rowsLeft_(rows), rowsPerBand_(rowsPerBand),
          bands_(std::move(crew)) {
        for (Band& band : bands_.slots())
            band.rows.resize(rowsPerBand_ * format().bytesPerRow());
        bands_.start([this](Band& band) { return fill(band); }, isSibling);
    }

    bool isReadAhead() const override { return true; }

    Result<void> readRow(std::span<std::uint8_t> row) override {
        if (band_ == nullptr || (nextRow_ == band_->count && !band_->interruption)) {
            band_ = &bands_.next();
            nextRow_ = 0;
        }
        if (nextRow_ == band_->count)
            return band_->interruption.passOn();
        std::memcpy(row.data(), band_->rows.data() + nextRow_ * row.size(), row.size());
        ++nextRow_;
        return {};
    }

private:
    bool fill(Band& band) {
        band.interruption.during([&] { return fillRows(band); });
        rowsLeft_ -= band.count;
        return !band.interruption && rowsLeft_ > 0;
    }

    Result<void> fillRows(Band& band) {
        const std::size_t size = format().bytesPerRow(), wanted = std::min(rowsLeft_, rowsPerBand_);
        for (band.count = 0; band.count < wanted; ++band.count)
            TRY(input_->readRow({band.rows.data() + band.count * size, size}));
        return {};
    }

    const RowSourcePointer input_; ///< used by the thread that fills
    std::size_t rowsLeft_;         ///< to be read; used by the thread that fills
    const std::size_t rowsPerBand_;
    const Band* band_ = nullptr; ///< used by the thread that reads
    std::size_t nextRow_ = 0;    ///< in band_
    SlotRing<Band, bandCount> bands_;
};

/// The rows of several parts: a band of each in turn.
class RowsInTurns final : public RowSource {
public:
    RowsInTurns(std::vector<RowSourcePointer> parts, std::size_t rowsPerBand)
        : RowSource(parts.front()->format()), parts_(std::move(parts)), rowsPerBand_(rowsPerBand) {}

    bool isReadAhead() const override { return true; }

    Result<void> readRow(std::span<std::uint8_t> row) override {
        return parts_[next_++ / rowsPerBand_ % parts_.size()]->readRow(row);
    }

private:
    const std::vector<RowSourcePointer> parts_;
    const std::size_t rowsPerBand_;
    std::size_t next_ = 0;
};

/// How many rows have so many bytes; at least one.
std::size_t rowsIn(std::size_t bytes, const RowFormat& format) {
    return std::max<std::size_t>(1, bytes / format.bytesPerRow());
}

/// The number of rows in the bands part, part + parts, part + 2 * parts, ... of a picture with `rows` rows.
std::size_t rowsOfPart(std::size_t rows, std::size_t rowsPerBand, std::size_t part, std::size_t parts) {
    const std::size_t round = rowsPerBand * parts;
    const std::size_t rest = rows % round, before = part * rowsPerBand;
    return rows / round * rowsPerBand + (rest <= before ? 0 : std::min(rowsPerBand, rest - before));
}

} // namespace

RowSourcePointer rowsAhead(RowSourcePointer input) {
    std::shared_ptr<Crew> crew = crewFor(input->format());
    if (crew == nullptr || input->isReadAhead())
        return input;
    const std::size_t rows = input->format().height;
    const std::size_t rowsPerBand = rowsIn(bandBytes, input->format());
    return std::make_unique<RowsAhead>(std::move(crew), std::move(input), rows, rowsPerBand, false);
}

std::size_t usefulThreads(const RowFormat& format) {
    return isWorthThreads(format) && forbiddenScopes == 0 ? std::min(processorCount(), maxThreads) : 1;
}

std::shared_ptr<Crew> crewFor(const RowFormat& format) {
    return isWorthThreads(format) && forbiddenScopes == 0 ? Crew::current() : nullptr;
}

RowSourcePointer rowsInTurns(std::vector<RowSourcePointer> parts, std::size_t rowsPerBand) {
    const RowFormat format = parts.front()->format();
    const std::size_t rowsAtATime = std::clamp(rowsPerBand / (bandCount - 1) + 1, rowsIn(bandBytes, format),
                                               rowsIn(maxBandBytesOfPart, format));
    if (const std::shared_ptr<Crew> crew = crewFor(format))
        for (std::size_t part = 0; part < parts.size(); ++part) {
            const std::size_t rows = rowsOfPart(format.height, rowsPerBand, part, parts.size());
            parts[part] =
                std::make_unique<RowsAhead>(crew, std::move(parts[part]), rows, rowsAtATime, part > 0);
        }
    return std::make_unique<RowsInTurns>(std::move(parts), rowsPerBand);
}

std::shared_ptr<Crew> crewOfAllCores() {
    const std::size_t threads = std::min(processorCount(), maxThreads);
    return threads < 2 || forbiddenScopes > 0 ? nullptr : std::make_shared<Crew>(threads);
}

OneThreadScope::OneThreadScope() { ++forbiddenScopes; }

OneThreadScope::~OneThreadScope() { --forbiddenScopes; }

bool OneThreadScope::exists() { return forbiddenScopes > 0; }

} // namespace kestrine

// RemoteSource: a source that is decoded in a worker.
#pragma once

#include "platform/host/process/MemoryBudget.h"
#include "platform/imageio/DamageRecord.h"
#include "platform/imageio/worker/WorkerPool.h"

namespace kestrine::worker {

/// What all sources of an engine share.
struct EngineParts {
    EngineParts(WorkerStart start, unsigned usualWorkers, std::span<const FileQuestion> table, bool isLenient)
        : pool(std::move(start), usualWorkers), questions(table), mayDecodeHere(isLenient) {}

    WorkerPool pool;
    const std::span<const FileQuestion> questions;
    /// Whether pictures are decoded in this process when no worker can be started.
    const bool mayDecodeHere;
};

/// A file as it is sent to a worker: by its descriptor, or by that of a copy if its bytes are in memory.
class SentFile {
public:
    static Result<SentFile> of(std::shared_ptr<const ByteReader> file);

    const std::shared_ptr<const ByteReader>& reader() const { return reader_; }
    std::uint64_t size() const { return reader_->size(); }
    int descriptor() const { return copy_ ? copy_->number() : reader_->descriptor(); }

private:
    explicit SentFile(std::shared_ptr<const ByteReader> file) : reader_(std::move(file)) {}

    std::shared_ptr<const ByteReader> reader_;
    std::optional<MemoryFile> copy_;
};

/// The answer to a question about a file that need not be a picture.
Result<Bytes> answerOfWorker(EngineParts& engine, std::shared_ptr<const ByteReader> file,
                             FileQuestion question);

/// It sees the file only as a descriptor to pass on, and the results as bytes to pass on.
class RemoteSource final : public Source {
public:
    /// Reads the header of a file, which `codec` recognised, in a worker; and answers a question beside, if
    /// it is not null.
    static Result<std::shared_ptr<Source>> open(std::shared_ptr<EngineParts> engine,
                                                std::shared_ptr<const ByteReader> file,
                                                const ImageCodec& codec, FileQuestion question);
    ~RemoteSource() override;

    void keepPixels() override { keepsPixels_ = true; }
    std::optional<Failure> damage() const override { return damage_.first(); }
    Result<Bytes> property(const Picture& picture, PictureProperty property) const override;
    Result<Bytes> answer(FileQuestion question) const override;
    Result<Bytes> rendered(const Picture& picture, const Output& output) override;
    Result<void> renderInto(int file, const Picture& picture, const Output& output) override;
    Result<PixelBuffer> pixels(const Picture& picture) override;

private:
    RemoteSource(std::shared_ptr<EngineParts> engine, SentFile file, const ImageCodec& codec);

    /// What the answer to an order may cost.
    struct Price {
        std::uint64_t pixels;        ///< of the source and the result together
        std::uint64_t maxContent;    ///< bytes of the answer
        std::uint32_t libraries = 0; ///< of the format of the result
        int resultFile = -1;         ///< the descriptor of a file for the result; -1 if it is the answer
    };

    Delivery deliver(Order order, const Price& price) const;
    /// Carries an order out in a worker, or by `here` in this process.
    template <class Here>
    Result<Bytes> carriedOut(Order order, const Price& price, const Here& here) const;
    Result<std::shared_ptr<Source>> openHere() const;
    Price priceOf(const Picture& picture) const;
    /// The order for a result, into a file or not.
    template <class Here>
    Result<Bytes> orderResult(const Picture& picture, const Output& output, int file, const Here& here);
    void reserveToKeep(std::size_t frame);

    const std::shared_ptr<EngineParts> engine_;
    const std::uint64_t number_;
    const SentFile file_;
    std::optional<std::pair<FileQuestion, Bytes>> knownAnswer_;
    mutable DamageRecord damage_;
    std::atomic<bool> keepsPixels_ = false;
    mutable std::mutex mutex_;
    std::vector<std::optional<MemoryReservation>> kept_; ///< by frame; guarded by mutex_, as the following
    std::uint64_t keptBytes_ = 0;
    mutable std::shared_ptr<Source> here_; ///< null unless no worker could be started
};

} // namespace kestrine::worker

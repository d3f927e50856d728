// LocalSource: a source that is decoded in this process.
#pragma once

#include "platform/imageio/Picture.h"

#include <atomic>
#include <mutex>

namespace kestrine {

class LocalSource final : public Source {
public:
    static Result<std::shared_ptr<LocalSource>> open(std::shared_ptr<const ByteReader> file);
    /// Opens the file with this codec and no other. Fails with reason "otherFormat" if its `other` must open
    /// the file.
    static Result<std::shared_ptr<LocalSource>> open(std::shared_ptr<const ByteReader> file,
                                                     const ImageCodec& codec);

    /// `file` is null for an empty canvas.
    LocalSource(std::unique_ptr<ImageDecoder> decoder, std::shared_ptr<const ByteReader> file);

    bool isCanvas() const override { return file_ == nullptr; }
    void keepPixels() override { keepsPixels_ = true; }
    bool keepsPixels(std::size_t frame) const {
        return keepsPixels_ && !frames()[frame].isDrawn && frames()[frame].format.canBeBuffered();
    }

    /// Whether the pixels of a frame are in memory.
    bool holdsPixels(std::size_t frame);

    /// The rows of a frame, decoded at 1 / 2^`halvings` of its size; `halvings` must be 0 if
    /// keepsPixels(frame). The caller must have reserved the memory that decoding needs (see
    /// FrameDescription::heldBytes).
    Result<RowSourcePointer> rows(std::size_t frame, int halvings);
    /// The rows of a frame that `isDrawn`, in any size.
    Result<RowSourcePointer> drawnRows(std::size_t frame, const AxisMap& x, const AxisMap& y) const;

    std::optional<Failure> damage() const override;
    Result<Bytes> property(const Picture& picture, PictureProperty property) const override;
    Result<Bytes> answer(FileQuestion question) const override { return question(file_); }
    Result<Bytes> rendered(const Picture& picture, const Output& output) override;
    Result<void> renderInto(int file, const Picture& picture, const Output& output) override;
    Result<PixelBuffer> pixels(const Picture& picture) override;

    /// How often decoding has been started in this process.
    static std::uint64_t decodesStarted();

private:
    Result<RowSourcePointer> decode(std::size_t frame, int halvings) const;
    /// Decodes the frame and keeps its pixels if there is memory for them; else gives null.
    Result<std::shared_ptr<const PixelBuffer>> decodeToKeep(std::size_t frame) const;

    const std::unique_ptr<ImageDecoder> decoder_;
    const std::shared_ptr<const ByteReader> file_;
    std::atomic<bool> keepsPixels_ = false;
    std::mutex mutex_;
    std::vector<std::shared_ptr<const PixelBuffer>> kept_; ///< by frame; guarded by mutex_
};

} // namespace kestrine

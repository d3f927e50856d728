// The functions of kestrine.h. Nothing that is thrown leaves them.

#include "_MyClasses/Category/IsolatedDecoding.h"
#include "libkestrine/CallFailure.h"
#include "libkestrine/CallOptions.h"
#include "libkestrine/kestrine.h"
#include "models/ResizeJob.h"
#include "platform/coregraphics/RowsAhead.h"
#include "platform/coregraphics/WatchedRows.h"
#include "platform/host/files/AtomicFile.h"
#include "platform/host/files/DuplicatedDescriptor.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileStatus.h"
#include "platform/imageio/PictureEngine.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>

using namespace kestrine;

struct kestrine_picture {
    std::shared_ptr<const ByteReader> file;
    std::shared_ptr<Source> source;
    kestrine_progress progress = nullptr;
    void* user = nullptr;
};

namespace {

/// Reads bytes that belong to the caller.
class BorrowedBytes final : public ByteReader {
public:
    explicit BorrowedBytes(ByteView bytes) : bytes_(bytes) {}

    std::uint64_t size() const override { return bytes_.size(); }
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> into) const override {
        if (offset >= bytes_.size())
            return 0;
        const std::size_t count = std::min<std::size_t>(into.size(), bytes_.size() - offset);
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset), count, into.begin());
        return count;
    }

private:
    const ByteView bytes_;
};

CallResult<kestrine_picture*> opened(std::shared_ptr<const ByteReader> file) {
    Result<std::shared_ptr<Source>> source = PictureEngine::current().open(file, nullptr);
    if (!source)
        return callFailure(source.failure());
    return new kestrine_picture{std::move(file), *std::move(source)};
}

kestrine_status open(kestrine_picture** picture, const auto& reader) {
    return answered([&]() -> CallResult<void> {
        if (picture == nullptr)
            return nullArgument("picture");
        *picture = nullptr;
        Result<std::shared_ptr<const ByteReader>> file = reader();
        if (!file)
            return callFailure(file.failure());
        *picture = TRY(opened(*std::move(file)));
        return {};
    });
}

CallResult<kestrine_info> describe(const kestrine_picture& picture) {
    const FrameDescription& frame = picture.source->frames().front();
    const Result<FileContents> contents = contentsOf(picture.source);
    const Result<Bytes> profile = picture.source->property({picture.source}, PictureProperty::profile);
    if (!contents || !profile)
        return callFailure(contents ? profile.failure() : contents.failure());
    kestrine_info info{};
    const std::string_view name = picture.source->codec()->name;
    name.copy(info.format, sizeof info.format - 1);
    info.width = frame.format.width;
    info.height = frame.format.height;
    info.orientation = static_cast<std::uint32_t>(frame.orientation);
    info.bits = static_cast<std::uint32_t>(8 * frame.format.bytesPerSample());
    info.is_gray = frame.format.model == ColorModel::gray ? 1 : 0;
    info.has_alpha = frame.format.hasAlpha ? 1 : 0;
    info.has_profile = profile->empty() ? 0 : 1;
    info.contents = static_cast<std::uint32_t>(contents->kind);
    info.count = contents->count;
    return info;
}

CallResult<std::shared_ptr<const NSData>> runCall(const kestrine_picture& picture,
                                                  const CallOptions& options) {
    std::optional<OneThreadScope> oneThread;
    if (options.usesOneThread)
        oneThread.emplace();
    double reported = -1;
    const RowWatch watch([&](double share) {
        reported = share;
        return picture.progress == nullptr || picture.progress(share, picture.user) == 0;
    });
    const bool wasEnded = !watch.report(0);
    const ResizeJob job{.recipes = {options.recipe},
                        .policy = {.refusesDamaged = !options.acceptsDamaged},
                        .content = picture.file};
    const JobOutcome outcome = wasEnded ? JobOutcome() : runJob(job).front();
    if (wasEnded || watch.wasEnded() || (reported < 1 && !watch.report(1)))
        return CallFailure{KESTRINE_CANCELLED, "the conversion was cancelled"};
    if (outcome.data != nullptr)
        return outcome.data;
    CallFailure failure = callFailure(*outcome.failure);
    if (outcome.refusal == Refusal::damaged)
        failure.status = KESTRINE_DAMAGED;
    return failure;
}

/// Converts, and gives `write` the result and the options.
kestrine_status convert(const kestrine_picture* picture, const char* json, const auto& check,
                        const auto& write) {
    return answered([&]() -> CallResult<void> {
        if (picture == nullptr)
            return nullArgument("picture");
        const Result<CallOptions> options = callOptionsIn(json == nullptr ? "{}" : json);
        if (!options)
            return CallFailure{KESTRINE_WRONG_ARGUMENT, options.failure().text};
        TRY(check(*options));
        const std::shared_ptr<const NSData> data = TRY(runCall(*picture, *options));
        return write(data->bytes(), *options);
    });
}

CallResult<void> checkedPath(const char* path, const CallOptions& options) {
    if (path == nullptr)
        return nullArgument("path");
    if (!options.overwrites && itemExists(path))
        return CallFailure{KESTRINE_ALREADY_EXISTS, std::string(path) + " exists already"};
    return {};
}

CallResult<void> writeFile(const std::string& path, ByteView bytes, bool overwrites) {
    const Result<std::string> published =
        publishNewFile([&](unsigned) { return path; }, bytes, Durability::cached);
    if (published)
        return {};
    if (!overwrites || published.failure().reason != Reason::alreadyExists)
        return callFailure(published.failure());
    const Result<void> replaced = replaceFile(path, bytes, Durability::cached);
    return replaced ? CallResult<void>() : callFailure(replaced.failure());
}

} // namespace

const char* kestrine_version(void) { return KESTRINE_VERSION; }

const char* kestrine_error_text(void) { return lastErrorText(); }

kestrine_status kestrine_open_path(const char* path, kestrine_picture** picture) {
    return open(picture, [&]() -> Result<std::shared_ptr<const ByteReader>> {
        return readerOfPath(path == nullptr ? "" : path);
    });
}

kestrine_status kestrine_open_descriptor(int descriptor, kestrine_picture** picture) {
    return open(picture, [&]() -> Result<std::shared_ptr<const ByteReader>> {
        return readerOfFile(TRY(duplicated(descriptor)));
    });
}

kestrine_status kestrine_open_memory(const void* bytes, size_t length, kestrine_picture** picture) {
    return open(picture, [&]() -> Result<std::shared_ptr<const ByteReader>> {
        const std::size_t count = bytes == nullptr ? 0 : length;
        return std::shared_ptr<const ByteReader>(
            std::make_shared<const BorrowedBytes>(ByteView(static_cast<const std::uint8_t*>(bytes), count)));
    });
}

void kestrine_close(kestrine_picture* picture) { delete picture; }

kestrine_status kestrine_describe(kestrine_picture* picture, kestrine_info* info) {
    return answered([&]() -> CallResult<void> {
        if (picture == nullptr || info == nullptr)
            return nullArgument(picture == nullptr ? "picture" : "info");
        const std::size_t size = info->size;
        if (size < sizeof(std::size_t))
            return CallFailure{KESTRINE_WRONG_ARGUMENT, "kestrine_info.size must be sizeof(kestrine_info)"};
        kestrine_info found = TRY(describe(*picture));
        found.size = size;
        std::memcpy(info, &found, std::min(size, sizeof found));
        return {};
    });
}

kestrine_status kestrine_set_progress(kestrine_picture* picture, kestrine_progress progress, void* user) {
    return answered([&]() -> CallResult<void> {
        if (picture == nullptr)
            return nullArgument("picture");
        picture->progress = progress;
        picture->user = user;
        return {};
    });
}

kestrine_status kestrine_convert_to_memory(kestrine_picture* picture, const char* options,
                                           kestrine_buffer* result) {
    const auto check = [&](const CallOptions&) {
        return result == nullptr ? CallResult<void>(nullArgument("result")) : CallResult<void>();
    };
    if (result != nullptr)
        *result = {};
    return convert(picture, options, check, [&](ByteView bytes, const CallOptions&) -> CallResult<void> {
        void* const copy = std::malloc(bytes.size());
        if (copy == nullptr)
            return CallFailure{KESTRINE_OUT_OF_MEMORY, "not enough memory for the result"};
        std::memcpy(copy, bytes.data(), bytes.size());
        *result = {copy, bytes.size()};
        return {};
    });
}

void kestrine_free(kestrine_buffer* buffer) {
    if (buffer == nullptr)
        return;
    std::free(buffer->bytes);
    *buffer = {};
}

kestrine_status kestrine_convert_to_path(kestrine_picture* picture, const char* options, const char* path) {
    return convert(
        picture, options, [&](const CallOptions& given) { return checkedPath(path, given); },
        [&](ByteView bytes, const CallOptions& given) { return writeFile(path, bytes, given.overwrites); });
}

kestrine_status kestrine_convert_to_descriptor(kestrine_picture* picture, const char* options,
                                               int descriptor) {
    return convert(
        picture, options, [](const CallOptions&) { return CallResult<void>(); },
        [&](ByteView bytes, const CallOptions&) -> CallResult<void> {
            const Result<void> written = writeAll(descriptor, bytes);
            return written ? CallResult<void>() : callFailure(written.failure());
        });
}

kestrine_status kestrine_use_workers(const char* helper) {
    return answered([&]() -> CallResult<void> {
        const std::string path = helper == nullptr ? KESTRINE_WORKER_PROGRAM : helper;
        if (!itemExists(path))
            return CallFailure{KESTRINE_NOT_FOUND, "there is no program " + path};
        // Never destroyed: other threads may decode while the process ends, and the workers end with it.
        static const auto* const workers =
            new IsolatedDecoding(Isolation::automatic, std::thread::hardware_concurrency(), path);
        (void)workers;
        return {};
    });
}

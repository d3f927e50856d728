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
#include "platform/host/process/ProgramPath.h"
#include "platform/imageio/PictureEngine.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
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

using FileReader = std::shared_ptr<const ByteReader>;

/// `openFile` gives the reader of the file.
kestrine_status open(kestrine_picture** picture, const auto& openFile) {
    return answered([&] {
        requireArgument(picture, "picture");
        *picture = nullptr;
        const FileReader file = valueOf<FileReader>(openFile());
        *picture = new kestrine_picture{file, valueOf(PictureEngine::current().open(file, nullptr))};
    });
}

kestrine_info describe(const std::shared_ptr<Source>& source) {
    const FrameDescription& frame = source->frames().front();
    const FileContents contents = valueOf(contentsOf(source));
    kestrine_info info{};
    source->codec()->name.copy(info.format, sizeof info.format - 1);
    info.width = frame.format.width;
    info.height = frame.format.height;
    info.orientation = static_cast<std::uint32_t>(frame.orientation);
    info.bits = static_cast<std::uint32_t>(8 * frame.format.bytesPerSample());
    info.is_gray = frame.format.model == ColorModel::gray ? 1 : 0;
    info.has_alpha = frame.format.hasAlpha ? 1 : 0;
    info.has_profile = valueOf(source->property({source}, PictureProperty::profile)).empty() ? 0 : 1;
    info.contents = static_cast<std::uint32_t>(contents.kind);
    info.count = contents.count;
    return info;
}

/// The first outcome of the job. Reports progress to the caller; 1 only with a result.
JobOutcome runWatched(const ResizeJob& job, const kestrine_picture& picture) {
    constexpr double almost = 0.99; // when all rows were read, the encoder may still fail
    const auto report = [&](double share) {
        return picture.progress == nullptr || picture.progress(share, picture.user) == 0;
    };
    const auto cancelled = [] { return CallFailure{KESTRINE_CANCELLED, "the conversion was cancelled"}; };
    if (!report(0))
        throw cancelled();
    const RowWatch watch([&](double share) { return report(almost * share); });
    JobOutcome outcome = runJob(job).front();
    if (watch.wasEnded() || (outcome.data != nullptr && !report(1)))
        throw cancelled();
    return outcome;
}

std::shared_ptr<const NSData> converted(const kestrine_picture& picture, const CallOptions& options) {
    std::optional<OneThreadScope> oneThread;
    if (options.usesOneThread)
        oneThread.emplace();
    const JobOutcome outcome = runWatched({.recipes = {options.recipe},
                                           .policy = {.refusesDamaged = !options.acceptsDamaged},
                                           .content = picture.file},
                                          picture);
    if (outcome.data != nullptr)
        return outcome.data;
    if (outcome.refusal == Refusal::damaged)
        throw CallFailure{KESTRINE_DAMAGED, outcome.failure->text};
    throw callFailure(*outcome.failure);
}

void requirePlaceForFile(std::string_view path) {
    if (path.empty())
        throw CallFailure{KESTRINE_WRONG_ARGUMENT, "the path is empty"};
    if (path.ends_with('/'))
        throw CallFailure{KESTRINE_NOT_A_FILE, std::string(path) + " names a folder"};
}

CallOptions optionsIn(const char* json) {
    Result<CallOptions> options = callOptionsIn(json == nullptr ? "{}" : json);
    if (!options)
        throw CallFailure{KESTRINE_WRONG_ARGUMENT, options.failure().text};
    return *std::move(options);
}

/// The kestrine-worker that was installed with this library, even if both were moved.
std::string installedWorker() {
    const std::filesystem::path library = pathOfThisLibrary();
    if (library.empty())
        return KESTRINE_WORKER_PROGRAM;
    const std::string found =
        (library.parent_path() / KESTRINE_WORKER_FROM_LIBRARY).lexically_normal().string();
    return itemExists(found) ? found : KESTRINE_WORKER_PROGRAM;
}

/// Throws CallFailure unless a worker without rights can be started.
std::unique_ptr<IsolatedDecoding> startWorkers(const std::string& program) {
    if (!itemExists(program))
        throw CallFailure{KESTRINE_NOT_FOUND, "there is no program " + program};
    auto workers =
        std::make_unique<IsolatedDecoding>(Isolation::strict, std::thread::hardware_concurrency(), program);
    const Result<SandboxLayers> layers = IsolatedDecoding::layers();
    if (!layers || *layers == SandboxLayers())
        throw CallFailure{KESTRINE_NOT_PERMITTED, program + " does not start as a worker"};
    if (!layers->all())
        throw CallFailure{KESTRINE_UNSUPPORTED, "this system cannot take all rights from a worker"};
    return workers;
}

} // namespace

const char* kestrine_version(void) { return KESTRINE_VERSION; }

const char* kestrine_error_text(void) { return lastErrorText(); }

kestrine_status kestrine_open_path(const char* path, kestrine_picture** picture) {
    return open(picture, [&] {
        requireArgument(path, "path");
        return readerOfPath(path);
    });
}

kestrine_status kestrine_open_descriptor(int descriptor, kestrine_picture** picture) {
    return open(picture, [&] { return readerOfFile(valueOf(duplicated(descriptor))); });
}

kestrine_status kestrine_open_memory(const void* bytes, size_t length, kestrine_picture** picture) {
    return open(picture, [&] {
        requireArgument(bytes, "bytes");
        return readerOfBorrowedBytes({static_cast<const std::uint8_t*>(bytes), length});
    });
}

void kestrine_close(kestrine_picture* picture) { delete picture; }

kestrine_status kestrine_describe(kestrine_picture* picture, kestrine_info* info) {
    return answered([&] {
        requireArgument(picture, "picture");
        requireArgument(info, "info");
        const std::size_t size = info->size;
        if (size < sizeof(std::size_t))
            throw CallFailure{KESTRINE_WRONG_ARGUMENT, "kestrine_info.size must be sizeof(kestrine_info)"};
        kestrine_info found = describe(picture->source);
        found.size = size;
        std::memcpy(info, &found, std::min(size, sizeof found));
    });
}

kestrine_status kestrine_set_progress(kestrine_picture* picture, kestrine_progress progress, void* user) {
    return answered([&] {
        requireArgument(picture, "picture");
        picture->progress = progress;
        picture->user = user;
    });
}

kestrine_status kestrine_convert_to_memory(kestrine_picture* picture, const char* options,
                                           kestrine_buffer* result) {
    return answered([&] {
        requireArgument(result, "result");
        *result = {};
        requireArgument(picture, "picture");
        const std::shared_ptr<const NSData> data = converted(*picture, optionsIn(options));
        void* const copy = std::malloc(data->length());
        if (copy == nullptr)
            throw std::bad_alloc();
        std::memcpy(copy, data->bytes().data(), data->length());
        *result = {copy, data->length()};
    });
}

void kestrine_free(kestrine_buffer* buffer) {
    if (buffer == nullptr)
        return;
    std::free(buffer->bytes);
    *buffer = {};
}

kestrine_status kestrine_convert_to_path(kestrine_picture* picture, const char* options, const char* path) {
    return answered([&] {
        requireArgument(picture, "picture");
        requireArgument(path, "path");
        requirePlaceForFile(path);
        const CallOptions given = optionsIn(options);
        if (given.overwrite == Overwrite::no && itemExists(path))
            throw CallFailure{KESTRINE_ALREADY_EXISTS, std::string(path) + " exists already"};
        valueOf(writeFile(path, converted(*picture, given)->bytes(), given.overwrite, Durability::cached));
    });
}

kestrine_status kestrine_convert_to_descriptor(kestrine_picture* picture, const char* options,
                                               int descriptor) {
    return answered([&] {
        requireArgument(picture, "picture");
        valueOf(writeAll(descriptor, converted(*picture, optionsIn(options))->bytes()));
    });
}

kestrine_status kestrine_use_workers(const char* program) {
    return answered([&] {
        // Never destroyed: other threads may decode while the process ends, and the workers end with it.
        static IsolatedDecoding* workers = nullptr;
        if (workers == nullptr)
            workers = startWorkers(program == nullptr ? installedWorker() : program).release();
    });
}

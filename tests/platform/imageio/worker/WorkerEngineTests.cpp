#include "platform/imageio/worker/WorkerEngine.h"

#include "platform/coregraphics/RowsAhead.h"
#include "platform/host/files/NamelessFile.h"
#include "platform/host/process/WorkerNursery.h"
#include "platform/imageio/Codecs.h"
#include "platform/imageio/LocalSource.h"
#include "platform/imageio/worker/Parcel.h"
#include "tests/platform/imageio/Decoded.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/Pictures.h"
#include "tests/support/Sanitizers.h"
#include "tests/support/SystemFeatures.h"
#include "tests/support/TemporaryFolder.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::makePhoto;

// Questions that stand for what a decoder may do when a file has taken it over.

using File = std::shared_ptr<const ByteReader>;

Bytes errorOf(bool succeeded) { return {static_cast<std::uint8_t>(succeeded ? 0 : errno)}; }

Result<Bytes> firstBytes(const File& file) {
    Bytes bytes(4);
    bytes.resize(file->readAt(0, bytes));
    return bytes;
}
Result<Bytes> decodesStarted(const File&) {
    return Bytes{static_cast<std::uint8_t>(LocalSource::decodesStarted())};
}
Result<Bytes> processNumber(const File&) {
    const pid_t number = ::getpid();
    const auto* first = reinterpret_cast<const std::uint8_t*>(&number);
    return Bytes(first, first + sizeof number);
}
Result<Bytes> crash(const File&) {
    *static_cast<volatile int*>(nullptr) = 1;
    return Bytes();
}
Result<Bytes> allocateMuch(const File&) {
    volatile std::size_t size = std::size_t{100} << 30;
    return Bytes(std::vector<std::uint8_t>(size).size() == 0 ? 0 : 1);
}
Result<Bytes> openAFile(const File&) { return errorOf(::open("/etc/passwd", O_RDONLY) >= 0); }
Result<Bytes> openASocket(const File&) { return errorOf(::socket(AF_INET, SOCK_STREAM, 0) >= 0); }
Result<Bytes> throwSomething(const File&) { throw std::runtime_error("on purpose"); }
Result<Bytes> unlisted(const File&) { return Bytes(); }

constexpr std::array<FileQuestion, 8> questions = {
    firstBytes, decodesStarted, processNumber, crash, allocateMuch, openAFile, openASocket, throwSomething};

Bytes jpegOf(std::uint32_t width, std::uint32_t height) {
    const PixelBuffer photo = makePhoto({width, height, ColorModel::rgb, false, SampleDepth::bits8});
    return *encoded(jpeg::encode, *rowsOfPixels(std::make_shared<PixelBuffer>(photo)), {.quality = 0.9});
}

/// From now on the system call fails. The test is skipped where the system does not permit that.
#define MAKE_FAIL(number, error)                                                                             \
    if (!testing::failSystemCall(number, error))                                                             \
    GTEST_SKIP() << "this system permits no filter of system calls"

class Engine {
public:
    explicit Engine(Isolation isolation = Isolation::automatic, unsigned workers = 1)
        : engine_(questions, isolation, workers) {}

    Result<std::shared_ptr<Source>> open(const Bytes& file, FileQuestion question = nullptr) {
        return engine_.open(readerOfBytes(file), question);
    }

private:
    WorkerEngine engine_;
};

Result<Bytes> asPNG(const std::shared_ptr<Source>& source, std::vector<PictureStep> steps = {}) {
    return render({source, 0, std::move(steps)}, {FileType::png, {}});
}

TEST(WorkerEngine, rendersAFileInAnotherProcess) {
    const Bytes file = jpegOf(200, 100);
    Engine engine;
    const std::shared_ptr<Source> source = *engine.open(file);
    EXPECT_EQ(source->frames().front().format.width, 200u);
    const std::uint64_t before = LocalSource::decodesStarted();
    EXPECT_EQ(*asPNG(source), *asPNG(*LocalSource::open(readerOfBytes(file))));
    EXPECT_EQ(LocalSource::decodesStarted() - before, 1u); // that of the local source
    EXPECT_NE(*source->answer(processNumber), *processNumber(nullptr));
}

TEST(WorkerEngine, reportsWhyAResultCouldNotBeWrittenAndGoesOnWithTheSameWorker) {
    const testing::TemporaryFolder folder;
    testing::runWithOwnMounts([&] {
        testing::mountFileSystem(folder / "disk", 16);
        Engine engine;
        const std::shared_ptr<Source> source = *engine.open(jpegOf(300, 200));
        const Bytes process = *source->answer(processNumber);
        for (const FileType type : {FileType::tiff, FileType::png, FileType::jpeg, FileType::gif}) {
            const NamelessFile file = *NamelessFile::createFor(folder / "disk", 0600);
            const Output output{type, {.quality = 1}};
            EXPECT_EQ(renderInto(file.descriptor(), {source, 0, {}}, output).failure().reason,
                      Reason::noSpace);
        }
        EXPECT_EQ(*source->answer(processNumber), process);
    });
}

TEST(WorkerEngine, readsAFileThatWasMovedAndHasNoNameAnyMore) {
    const testing::TemporaryFolder folder;
    const Bytes file = jpegOf(60, 40);
    const std::string path = folder.write("a.jpg", std::string(file.begin(), file.end()));
    WorkerEngine engine(questions, Isolation::automatic, 1);
    const std::shared_ptr<Source> source = *engine.open(*readerOfPath(path), nullptr);
    std::filesystem::remove(path);
    EXPECT_TRUE(asPNG(source));
}

TEST(WorkerEngine, startsNoProcessForWhatIsNoPicture) {
    testing::runIsolated([] {
        MAKE_FAIL(SYS_clone, EAGAIN);
        const Result<std::shared_ptr<Source>> opened =
            Engine(Isolation::strict).open(testing::bytesOf("no picture"));
        ASSERT_FALSE(opened);
        EXPECT_EQ(opened.failure().reason, Reason::unsupported);
    });
}

TEST(WorkerEngine, reportsWhyAFileCannotBeOpened) {
    Bytes file = jpegOf(20, 20);
    file.resize(30);
    const Result<std::shared_ptr<Source>> opened = Engine().open(file);
    const auto local = LocalSource::open(readerOfBytes(file));
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.failure().reason, local.failure().reason);
    EXPECT_EQ(opened.failure().text, local.failure().text);
}

TEST(WorkerEngine, reportsDamage) {
    Bytes file = jpegOf(200, 200);
    file.resize(file.size() / 2);
    Engine engine;
    const std::shared_ptr<Source> source = *engine.open(file);
    EXPECT_FALSE(source->damage());
    EXPECT_TRUE(asPNG(source));
    ASSERT_TRUE(source->damage());
    EXPECT_EQ(source->damage()->reason, Reason::truncated);
}

TEST(WorkerEngine, answersQuestionsWithTheOpeningOrLater) {
    Engine engine;
    const std::shared_ptr<Source> source = *engine.open(jpegOf(20, 20), firstBytes);
    const Bytes signature = {0xff, 0xd8, 0xff, 0xe0};
    EXPECT_EQ(*source->answer(firstBytes), signature);
    EXPECT_EQ(*(*engine.open(jpegOf(20, 20)))->answer(firstBytes), signature);
    EXPECT_EQ(source->answer(unlisted).failure().reason, Reason::refused);
}

TEST(WorkerEngine, convertsSourcesInTurnsWithOneWorker) {
    Engine engine;
    const Bytes first = jpegOf(40, 30), second = jpegOf(50, 20);
    const std::shared_ptr<Source> one = *engine.open(first), other = *engine.open(second);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(*asPNG(one), *asPNG(*LocalSource::open(readerOfBytes(first))));
        EXPECT_EQ(*asPNG(other), *asPNG(*LocalSource::open(readerOfBytes(second))));
    }
    EXPECT_EQ(*one->answer(processNumber), *other->answer(processNumber));
}

TEST(WorkerEngine, keepsAsManySourcesOpenAsItHasWorkers) {
    Engine engine(Isolation::automatic, 2);
    const std::shared_ptr<Source> one = *engine.open(jpegOf(20, 20)), other = *engine.open(jpegOf(20, 20));
    const Bytes first = *one->answer(processNumber), second = *other->answer(processNumber);
    EXPECT_NE(first, second);
    EXPECT_EQ(*one->answer(processNumber), first);
    EXPECT_EQ(*other->answer(processNumber), second);
}

/// How often a source that keeps its pixels is decoded for two equal results.
int decodesForTwoResults() {
    Engine engine;
    const std::shared_ptr<Source> source = *engine.open(jpegOf(300, 200));
    source->keepPixels();
    const int before = source->answer(decodesStarted)->front();
    const Bytes first = *asPNG(source);
    EXPECT_EQ(*asPNG(source), first);
    return source->answer(decodesStarted)->front() - before;
}

TEST(WorkerEngine, decodesOnceWhenPixelsAreKept) { EXPECT_EQ(decodesForTwoResults(), 1); }

TEST(WorkerEngine, decodesAgainWhenThereIsNoMemoryForKeptPixels) {
    testing::runIsolated([] {
        budgetForKeptPictures().setLimit(0);
        EXPECT_EQ(decodesForTwoResults(), 2);
    });
}

TEST(WorkerEngine, refusesAPictureThatNeedsMoreMemoryThanThereIs) {
    testing::runIsolated([] {
        budgetForHeldPictures().setLimit(1000);
        Engine engine;
        const std::shared_ptr<Source> source = *engine.open(jpegOf(300, 200));
        EXPECT_TRUE(asPNG(source));
        EXPECT_EQ(asPNG(source, {QuarterTurn::clockwise}).failure().reason, Reason::tooLarge);
    });
}

TEST(WorkerEngine, givesLargePixelsAndFiles) {
    const Bytes file = jpegOf(2000, 1500);
    Engine engine;
    const std::shared_ptr<Source> source = *engine.open(file);
    const auto local = *LocalSource::open(readerOfBytes(file));
    const PixelBuffer pixels = *readPixels({source, 0, {}});
    EXPECT_EQ(pixels.format, source->frames().front().format);
    EXPECT_EQ(pixels.bytes, readPixels({local, 0, {}})->bytes);
    const Output uncompressed{FileType::tiff, {}};
    EXPECT_EQ(*render({source, 0, {}}, uncompressed), *render({local, 0, {}}, uncompressed));
}

TEST(WorkerEngine, leavesItsSourcesToThisProcessWhenItEnds) {
    const Bytes file = jpegOf(30, 20);
    std::shared_ptr<Source> lenient, strict;
    {
        Engine engine(Isolation::automatic), strictEngine(Isolation::strict);
        if (!testing::hasLandlock() || !testing::permitsSystemCallFilters())
            GTEST_SKIP() << "the system lacks a layer";
        lenient = *engine.open(file);
        strict = *strictEngine.open(file);
    }
    EXPECT_EQ(*asPNG(lenient), *asPNG(*LocalSource::open(readerOfBytes(file))));
    EXPECT_EQ(*lenient->answer(processNumber), *processNumber(nullptr));
    EXPECT_EQ(asPNG(strict).failure().reason, Reason::refused);
}

TEST(WorkerEngine, replacesAWorkerThatEndedBetweenTwoRequests) {
    Engine engine;
    const std::shared_ptr<Source> source = *engine.open(jpegOf(20, 20));
    pid_t worker = 0;
    const Bytes number = *source->answer(processNumber);
    std::memcpy(&worker, number.data(), sizeof worker);
    ::kill(worker, SIGKILL);
    siginfo_t ended{};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(worker), &ended, WEXITED | WNOWAIT), 0);
    EXPECT_TRUE(asPNG(source));
}

TEST(WorkerEngine, refusesMoreStepsThanTheLimitAndGoesOn) {
    Engine engine;
    const std::shared_ptr<Source> source = *engine.open(jpegOf(20, 20));
    const std::vector<PictureStep> tooMany(worker::maxSteps + 1, Flatten{});
    EXPECT_EQ(asPNG(source, tooMany).failure().reason, Reason::refused);
    EXPECT_TRUE(asPNG(source));
}

// What a hostile file could do.

TEST(WorkerEngine, losesOneFileWhenADecoderCrashes) {
    Engine engine;
    const std::shared_ptr<Source> source = *engine.open(jpegOf(20, 20));
    const Result<Bytes> answer = source->answer(crash);
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.failure().reason, Reason::crashed);
    EXPECT_EQ(answer.failure().text, "the decoder crashed");
    EXPECT_TRUE(asPNG(*engine.open(jpegOf(20, 20))));
}

TEST(WorkerEngine, losesOneFileWhenADecoderThrowsWhatNobodyExpects) {
    Engine engine;
    EXPECT_EQ((*engine.open(jpegOf(20, 20)))->answer(throwSomething).failure().reason, Reason::crashed);
    EXPECT_TRUE(asPNG(*engine.open(jpegOf(20, 20))));
}

TEST(WorkerEngine, reportsThatMemoryRanOutAndGoesOnWithTheSameWorker) {
    SKIP_UNDER_SANITIZERS("sanitizers end a program that has too little memory");
    Engine engine;
    const std::shared_ptr<Source> source = *engine.open(jpegOf(20, 20));
    const Bytes worker = *source->answer(processNumber);
    const Result<Bytes> answer = source->answer(allocateMuch);
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.failure().reason, Reason::outOfMemory);
    EXPECT_EQ(*source->answer(processNumber), worker);
}

TEST(WorkerEngine, letsDecodersOpenNoFileAndNoSocket) {
    Engine engine;
    const std::shared_ptr<Source> source = *engine.open(jpegOf(20, 20));
    const Result<Bytes> opened = source->answer(openAFile);
    ASSERT_TRUE(opened);
    EXPECT_EQ(*opened, Bytes{EACCES});
    const Result<Bytes> connected = source->answer(openASocket); // refused, or the worker is ended
    EXPECT_TRUE(connected ? *connected == Bytes{ENOSYS} : connected.failure().reason == Reason::crashed);
}

/// Opens a file with a worker that was taken over: it answers every request with the same message, after
/// doing `before` with the shared file.
Result<std::shared_ptr<Source>> openedByAHostileWorker(const Bytes& answer,
                                                       void (*before)(const MemoryFile&) = nullptr) {
    const WorkerProgram program{.prepare = {},
                                .serve =
                                    [=](MessageSocket& requests) {
                                        for (;;) {
                                            Result<std::optional<Message>> message = requests.receive(true);
                                            if (!message || !*message)
                                                return;
                                            const MemoryFile shared(std::move((*message)->files[1]));
                                            if (before != nullptr)
                                                before(shared);
                                            (void)requests.send(answer);
                                        }
                                    },
                                .limits = {}};
    const auto start = [program](std::uint32_t libraries) {
        return WorkerProcess::start(program, libraries);
    };
    return worker::RemoteSource::open(std::make_shared<worker::EngineParts>(start, 1U, questions, true),
                                      readerOfBytes(jpegOf(20, 20)), jpeg::codec, nullptr);
}

Bytes messageOf(const worker::Response& response) {
    return *worker::packed({worker::bytesOf(response), {}}, *MemoryFile::create());
}

TEST(WorkerEngine, believesNoHostileWorker) {
    FrameDescription frame;
    frame.format = {20, 20, ColorModel::rgb, false, SampleDepth::bits8};
    worker::Response lawful, tooLarge;
    lawful.frames = {frame};
    frame.format.width = maximumSide + 1;
    tooLarge.frames = {frame};
    EXPECT_TRUE(openedByAHostileWorker(messageOf(lawful)));
    // A part of 2^62 bytes in the shared file, which is empty.
    const Bytes endless = {0, 0, 0, 0, 0, 0, 0, 0, 0x40, 1, 0, 0, 0, 0, 0, 0, 0, 0};
    for (const Bytes& answer : {testing::bytesOf("nonsense"), Bytes{0}, Bytes(60'000, 255), endless,
                                messageOf(tooLarge), messageOf({})}) {
        const Result<std::shared_ptr<Source>> opened = openedByAHostileWorker(answer);
        ASSERT_FALSE(opened) << answer.size();
        EXPECT_EQ(opened.failure().reason, Reason::crashed) << answer.size();
    }
}

TEST(WorkerEngine, isNotHarmedByAHostileWorkerThatMakesTheSharedFileLong) {
    const Bytes anEmptyFile = {1, 0, 0, 0, 0, 0, 0,    0, 0,
                               0, 0, 0, 0, 0, 0, 0x40, 0, 0}; // 2^46 bytes of content
    const auto opened = openedByAHostileWorker(
        anEmptyFile, [](const MemoryFile& shared) { (void)!::ftruncate(shared.number(), 1L << 35); });
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.failure().reason, Reason::crashed);
}

TEST(WorkerEngine, takesAnEmptyResultForACrash) {
    FrameDescription frame;
    frame.format = {20, 20, ColorModel::rgb, false, SampleDepth::bits8};
    worker::Response done;
    done.frames = {frame};
    const std::shared_ptr<Source> source = *openedByAHostileWorker(messageOf(done));
    const Result<Bytes> result = asPNG(source);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.failure().reason, Reason::crashed);
}

// What a copy of the process does.

/// Runs `steps` in a copy of this process and, at the same time, `ownSteps` in this one. Both return whether
/// everything was right.
void expectRightAtOnce(const std::function<bool()>& steps, const std::function<bool()>& ownSteps) {
    const pid_t copy = ::fork();
    ASSERT_GE(copy, 0);
    if (copy == 0)
        ::_exit(steps() ? 0 : 1);
    EXPECT_TRUE(ownSteps());
    int status = 0;
    ASSERT_EQ(::waitpid(copy, &status, 0), copy);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST(WorkerEngine, servesAForkedCopyAndItsParentAtOnce) {
    const Bytes first = jpegOf(200, 100), second = jpegOf(90, 160);
    Engine engine; // with one worker, for which both would compete
    const std::shared_ptr<Source> one = *engine.open(first), other = *engine.open(second);
    const Bytes ofOne = *asPNG(*LocalSource::open(readerOfBytes(first)));
    const Bytes ofOther = *asPNG(*LocalSource::open(readerOfBytes(second)));
    const auto isRight = [&](const std::shared_ptr<Source>& source, const Bytes& expected) {
        for (int turn = 0; turn < 20; ++turn)
            if (const Result<Bytes> result = asPNG(source); !result || *result != expected)
                return false;
        return true;
    };
    expectRightAtOnce([&] { return isRight(one, ofOne) && isRight(other, ofOther); },
                      [&] { return isRight(other, ofOther) && isRight(one, ofOne); });
}

TEST(WorkerEngine, opensAPictureAnewInAWorkerOfAForkedCopy) {
    Engine engine;
    const std::shared_ptr<Source> source = *engine.open(jpegOf(20, 20));
    const Bytes worker = *source->answer(processNumber);
    testing::runIsolated([&] {
        const Result<Bytes> own = source->answer(processNumber);
        ASSERT_TRUE(own);
        EXPECT_NE(*own, worker);
        EXPECT_NE(*own, *processNumber(nullptr));
    });
    EXPECT_EQ(*source->answer(processNumber), worker);
}

TEST(WorkerEngine, keepsThePixelsOfAPictureThatAForkedCopyCloses) {
    Engine engine;
    std::shared_ptr<Source> source = *engine.open(jpegOf(300, 200));
    source->keepPixels();
    EXPECT_TRUE(asPNG(source));
    const Bytes before = *source->answer(decodesStarted);
    testing::runIsolated([&] { source.reset(); });
    EXPECT_TRUE(asPNG(source));
    EXPECT_EQ(*source->answer(decodesStarted), before);
}

// What the system may lack.

TEST(WorkerEngine, decodesInThisProcessWhenNoProcessCanBeStarted) {
    testing::runIsolated([] {
        MAKE_FAIL(SYS_clone, EAGAIN);
        const Bytes file = jpegOf(30, 20);
        Engine lenient;
        const std::shared_ptr<Source> source = *lenient.open(file, firstBytes);
        EXPECT_EQ(*source->answer(processNumber), *processNumber(nullptr));
        EXPECT_EQ(*asPNG(source), *asPNG(*LocalSource::open(readerOfBytes(file))));
        const MemoryFile result = *MemoryFile::create();
        ASSERT_TRUE(renderInto(result.number(), {source, 0, {}}, {FileType::png, {}}));
        EXPECT_EQ(*result.read(0, asPNG(source)->size()), *asPNG(source));
        EXPECT_EQ(Engine(Isolation::strict).open(file).failure().reason, Reason::inputOutput);
    });
}

TEST(WorkerEngine, decodesASourceHereWhenItsWorkerEndedAndNoOtherCanBeStarted) {
    testing::runIsolated([] {
        const Bytes file = jpegOf(30, 20);
        Engine engine;
        const std::shared_ptr<Source> source = *engine.open(file);
        EXPECT_FALSE(source->answer(crash));
        MAKE_FAIL(SYS_clone, EAGAIN);
        EXPECT_EQ(*asPNG(source), *asPNG(*LocalSource::open(readerOfBytes(file))));
    });
}

TEST(WorkerEngine, needsAllLayersOnlyWhenItIsStrict) {
    testing::runIsolated([] {
        MAKE_FAIL(SYS_landlock_create_ruleset, ENOSYS);
        EXPECT_TRUE(asPNG(*Engine(Isolation::automatic).open(jpegOf(20, 20))));
        const Result<std::shared_ptr<Source>> opened = Engine(Isolation::strict).open(jpegOf(20, 20));
        ASSERT_FALSE(opened);
        EXPECT_EQ(opened.failure().reason, Reason::refused);
    });
}

TEST(WorkerEngine, worksWithAllLayersWhereTheSystemHasThem) {
    if (!testing::hasLandlock() || !testing::permitsSystemCallFilters())
        GTEST_SKIP() << "the system lacks a layer";
    EXPECT_TRUE(asPNG(*Engine(Isolation::strict).open(jpegOf(20, 20))));
}

TEST(WorkerEngine, servesManyThreadsWithANursery) {
    const Bytes file = jpegOf(120, 80);
    const Bytes expected = *asPNG(*LocalSource::open(readerOfBytes(file)));
    const WorkerNursery nursery(pictureWorker(questions));
    Engine engine(Isolation::automatic, 2);
    std::atomic<int> equal = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&] {
                const OneThreadScope oneThread;
                for (int turn = 0; turn < 8; ++turn)
                    equal += *asPNG(*engine.open(file)) == expected ? 1 : 0;
            });
    }
    EXPECT_EQ(equal, 32);
}

} // namespace
} // namespace kestrine

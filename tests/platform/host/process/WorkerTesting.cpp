#include "tests/platform/host/process/WorkerTesting.h"

#include "platform/host/process/ProcessorCount.h"
#include "platform/host/process/WorkerNursery.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <thread>
#include <time.h>
#include <unistd.h>

namespace kestrine::testing {

namespace {

std::uint32_t preparedModules = 0;
pid_t preparedIn = 0;
const pid_t testProcess = ::getpid();

/// The compiler must not know how the value is used.
template <class T>
T hidden(T value) {
    asm volatile("" : "+r"(value) : : "memory");
    return value;
}

int errorOf(long result) { return result < 0 ? errno : 0; }

int fileStatus(int number, struct stat& status) {
    return static_cast<int>(
        ::syscall(SYS_fstat, number, &status)); // the C library uses a system call that takes paths
}

template <class Condition>
std::uint8_t countOfDescriptors(Condition condition) {
    std::uint8_t count = 0;
    for (int number = 0; number < 1024; ++number) {
        struct stat status {};
        if (fileStatus(number, status) == 0 && condition(status))
            ++count;
    }
    return count;
}

int allocate(std::size_t size) {
    char* const memory = hidden(static_cast<char*>(std::malloc(hidden(size))));
    if (memory == nullptr)
        return ENOMEM;
    std::memset(memory, 1, std::min<std::size_t>(size, 100 << 20));
    std::free(hidden(memory));
    return 0;
}

int map(int protection) {
    void* const memory = ::mmap(nullptr, 4096, protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? errno : 0;
}

int protect() {
    void* const memory = ::mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return errorOf(::mprotect(memory, 4096, PROT_READ | PROT_EXEC));
}

int startThread() {
    bool ran = false;
    try {
        std::thread([&] { ran = true; }).join();
    } catch (const std::system_error& error) {
        return error.code().value();
    }
    return ran ? 0 : EINVAL;
}

int throwAndCatch() {
    try {
        throw std::runtime_error("thrown");
    } catch (const std::runtime_error&) {
        return 0;
    }
}

int readClock() {
    timespec now{};
    return errorOf(::clock_gettime(CLOCK_MONOTONIC, &now)) + (now.tv_sec > 0 ? 0 : EINVAL);
}

int forkProcess() {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(0);
    return errorOf(child);
}

int startProgram() {
    char name[] = "/bin/true";
    char* arguments[] = {name, nullptr};
    return errorOf(::execve(name, arguments, arguments + 1));
}

int compareBytes(const void* one, const void* other) { return std::memcmp(one, other, 1); }

/// qsort() asks the system how much memory it has.
int sortMuch() {
    Bytes bytes(1 << 20, 1);
    std::qsort(bytes.data(), bytes.size(), 1, compareBytes);
    return 0;
}

int damageMemory() {
    void* const memory = ::mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    constexpr int softOffline = 101; // moves the content first
    return errorOf(::madvise(memory, 4096, softOffline));
}

#ifdef __x86_64__
int callX32Interface() { return errorOf(::syscall(0x40000000 | SYS_getpid)); }

int call32BitInterface() {
    int result = 20; // getpid there
    asm volatile("int $0x80" : "+a"(result) : : "memory", "r8", "r9", "r10", "r11");
    return 0;
}
#endif

int attempt(Order order) {
    struct stat status {};
    switch (order) {
    case Order::openFile:
        return errorOf(::open("/etc/passwd", O_RDONLY | O_CLOEXEC));
    case Order::examineFile:
        return errorOf(::stat("/etc/passwd", &status));
    case Order::openSocket:
        return errorOf(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    case Order::startProgram:
        return startProgram();
    case Order::forkProcess:
        return forkProcess();
    case Order::signalParent:
        return errorOf(::kill(testProcess, 0));
    case Order::traceParent:
        return errorOf(::ptrace(PTRACE_SEIZE, testProcess, 0, 0));
    case Order::mapExecutable:
        return map(PROT_READ | PROT_EXEC);
    case Order::makeExecutable:
        return protect();
    case Order::startThread:
        return startThread();
    case Order::allocate100MB:
        return allocate(std::size_t{100} << 20);
    case Order::allocate100GB:
        return allocate(std::size_t{100} << 30);
    case Order::readClock:
        return readClock();
    case Order::throwAndCatch:
        return throwAndCatch();
    case Order::sortMuch:
        return sortMuch();
    case Order::askForProcessors:
        return processorCount() > 0 ? 0 : EINVAL;
    case Order::signalParentThread:
        return errorOf(::syscall(SYS_tgkill, testProcess, testProcess, 0));
    case Order::damageMemory:
        return damageMemory();
#ifdef __x86_64__
    case Order::callX32Interface:
        return callX32Interface();
    case Order::call32BitInterface:
        return call32BitInterface();
#endif
    default:
        return EINVAL;
    }
}

long usedMilliseconds() {
    timespec used{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return used.tv_sec * 1000 + used.tv_nsec / 1'000'000;
}

void workForAWhile() {
    const long end = usedMilliseconds() + 400;
    while (usedMilliseconds() < end) {
    }
}

int overflow(int depth) {
    std::array<int, 1000> frame{};
    frame[hidden(depth) % 1000] = depth;
    return depth < 0 ? 0 : hidden(frame.data())[3] + overflow(depth + 1);
}

void copyFile(const std::vector<FileDescriptor>& files) {
    char content[100];
    const ssize_t count = ::pread(files.at(0).number(), content, sizeof content, 0);
    if (count < 0 || ::pwrite(files.at(1).number(), content, std::size_t(count), 0) != count)
        std::abort();
}

/// Does not return.
void misbehave(Order order) {
    switch (order) {
    case Order::writeToNull:
        *hidden(static_cast<volatile int*>(nullptr)) = 1;
        break;
    case Order::abort:
        std::abort();
    case Order::overflowTheStack:
        hidden(overflow(hidden(0)));
        break;
    case Order::throwOutOfServe:
        throw std::runtime_error("not caught");
    case Order::loopForEver:
        for (;;)
            hidden(0);
    case Order::sleepForEver:
        for (;;)
            std::this_thread::sleep_for(std::chrono::hours{1});
    default:
        ::_exit(0);
    }
}

Bytes bytesOf(pid_t process) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&process);
    return Bytes(bytes, bytes + sizeof process);
}

Bytes answerOf(Order order, const Message& request) {
    switch (order) {
    case Order::echo:
        return Bytes(request.bytes.begin() + 1, request.bytes.end());
    case Order::preparedModules:
        return {static_cast<std::uint8_t>(preparedModules)};
    case Order::ownProcess:
        return bytesOf(::getpid());
    case Order::processOfPreparation:
        return bytesOf(preparedIn);
    case Order::countDescriptors:
        return {countOfDescriptors([](const struct stat&) { return true; })};
    case Order::countFiles:
        return {countOfDescriptors([](const struct stat& status) { return S_ISREG(status.st_mode); })};
    case Order::copyFile:
        return copyFile(request.files), Bytes{0};
    case Order::workForAWhile:
        return workForAWhile(), Bytes{0};
    case Order::endAfterAnswer:
        return {0};
    default:
        if (order >= Order::writeToNull)
            misbehave(order);
        return {static_cast<std::uint8_t>(attempt(order))};
    }
}

void prepareCopies() { preparedIn = ::getpid(); }

void prepare(std::uint32_t modules) { preparedModules = modules; }

void serve(MessageSocket& requests) {
    for (;;) {
        const Result<std::optional<Message>> request = requests.receive(true);
        if (!request || !*request)
            return;
        const auto order = static_cast<Order>((*request)->bytes.front());
        if (!requests.send(answerOf(order, **request)) || order == Order::endAfterAnswer)
            return;
    }
}

} // namespace

WorkerProgram workerProgram(UnlistedCalls unlisted, std::uint64_t addressSpace) {
    return {prepareCopies, prepare, serve, {addressSpace, unlisted}};
}

std::unique_ptr<WorkerProcess> startWorker(UnlistedCalls unlisted) {
    return WorkerProcess::start(workerProgram(unlisted), 5).take();
}

int answerTo(WorkerProcess& worker, Order attempted) {
    const Result<Bytes> answer = worker.exchange(Bytes{order(attempted)}, {}, amplyLimited);
    return answer ? answer->front() : 255;
}

pid_t processOf(WorkerProcess& worker, Order order) {
    const Bytes answer = *worker.exchange(Bytes{testing::order(order)}, {}, amplyLimited);
    pid_t process = 0;
    std::memcpy(&process, answer.data(), sizeof process);
    return process;
}

bool adoptsOrphans() { return ::prctl(PR_SET_CHILD_SUBREAPER, 1) == 0; }

ParentAndWorker startParentOfASleepingWorker(bool hasNursery) {
    int pipe[2];
    if (::pipe(pipe) != 0)
        std::abort();
    const pid_t parent = ::fork();
    if (parent == 0) {
        std::optional<WorkerNursery> nursery;
        if (hasNursery)
            nursery.emplace(workerProgram());
        const auto worker = startWorker();
        const pid_t process = processOf(*worker);
        if (::write(pipe[1], &process, sizeof process) != ssize_t{sizeof process})
            std::abort();
        (void)worker->exchange(Bytes{order(Order::sleepForEver)}, {}, amplyLimited);
        std::abort(); // it never answers
    }
    pid_t worker = -1;
    if (::read(pipe[0], &worker, sizeof worker) != ssize_t{sizeof worker})
        worker = -1;
    ::close(pipe[0]);
    ::close(pipe[1]);
    std::this_thread::sleep_for(std::chrono::milliseconds{20}); // so that the worker sleeps
    return {parent, worker};
}

} // namespace kestrine::testing

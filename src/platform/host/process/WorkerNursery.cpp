#include "platform/host/process/WorkerNursery.h"

#include <cstring>
#include <spawn.h>
#include <type_traits>
#include <unistd.h>
#include <utility>

namespace kestrine {

namespace {

/// A request to the nursery's process. Both processes run the same program, so the structures are sent as
/// they are in memory.
struct NurseryRequest {
    pid_t workerToEnd; ///< 0: start one
    std::uint32_t modules;
};

/// The answer, with our end of the connection with a new worker.
struct NurseryAnswer {
    pid_t worker;
    Reason failure; ///< if no worker could be started
};

constinit const WorkerNursery* currentNursery = nullptr;

template <class T>
ByteView bytesIn(const T& structure) {
    static_assert(std::is_trivially_copyable_v<T>);
    return {reinterpret_cast<const std::uint8_t*>(&structure), sizeof structure};
}

Failure failureToReach() { return {Reason::inputOutput, "the process that starts workers has ended"}; }

template <class T>
Result<T> structureIn(const Result<std::optional<Message>>& message) {
    T structure{};
    if (!message || !*message || (*message)->bytes.size() != sizeof structure)
        return failureToReach();
    std::memcpy(&structure, (*message)->bytes.data(), sizeof structure);
    return structure;
}

Result<void> startAndSend(const WorkerProgram& program, std::uint32_t modules, const MessageSocket& socket) {
    const Result<ForkedWorker> worker = forkWorker(program, modules);
    if (!worker)
        return socket.send(bytesIn(NurseryAnswer{0, worker.failure().reason}));
    const int files[] = {worker->socket.number()};
    return socket.send(bytesIn(NurseryAnswer{worker->process, {}}), files);
}

Result<void> serveOneRequest(const WorkerProgram& program, const MessageSocket& socket) {
    const NurseryRequest request = TRY(structureIn<NurseryRequest>(socket.receive(false)));
    if (request.workerToEnd == 0)
        return startAndSend(program, request.modules, socket);
    endChild(request.workerToEnd);
    return socket.send(bytesIn(NurseryAnswer{}));
}

/// Where a helper program finds the connection.
constexpr int helperSocket = STDERR_FILENO + 1;

/// Serves until the other end is closed.
void serveNursery(const WorkerProgram& program, int socketNumber) {
    const MessageSocket socket(FileDescriptor(becomeSubordinate(socketNumber)));
    while (serveOneRequest(program, socket)) {
    }
}

[[noreturn]] void runForkedNursery(const WorkerProgram& program, int socketNumber, pid_t parent) noexcept {
    endWithParent(parent);
    serveNursery(program, socketNumber);
    ::_exit(0);
}

/// Starts the helper with `socket` as its helperSocket. Returns -1 if that is not possible.
pid_t spawnHelper(const std::string& helper, int socket) {
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, socket, helperSocket);
    std::string name = helper;
    char* const arguments[] = {name.data(), nullptr};
    pid_t process = -1;
    const int error = ::posix_spawn(&process, helper.c_str(), &actions, nullptr, arguments, environ);
    ::posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? process : -1;
}

using SocketPair = std::pair<MessageSocket, MessageSocket>;

/// The connection with a process that was just started and has the second socket. Without a process, the
/// connection has no other end.
std::shared_ptr<NurseryConnection> connectionWith(pid_t process, Result<SocketPair> ends) {
    return std::make_shared<NurseryConnection>(ends ? std::move(ends->first)
                                                    : MessageSocket(FileDescriptor()),
                                               process > 0 ? std::optional(process) : std::nullopt);
}

std::shared_ptr<NurseryConnection> startCopy(const WorkerProgram& program) {
    Result<SocketPair> ends = MessageSocket::pair();
    const pid_t parent = ::getpid();
    const pid_t process = ends ? ::fork() : -1;
    if (process == 0)
        runForkedNursery(program, ends->second.number(), parent);
    return connectionWith(process, std::move(ends));
}

std::shared_ptr<NurseryConnection> startHelper(const std::string& helper) {
    Result<SocketPair> ends = MessageSocket::pair();
    const pid_t process = ends ? spawnHelper(helper, ends->second.number()) : -1;
    return connectionWith(process, std::move(ends));
}

} // namespace

Result<ForkedWorker> NurseryConnection::startWorker(std::uint32_t modules) {
    if (!owner_.isCurrent())
        return failureToReach();
    const std::lock_guard lock(mutex_);
    if (!socket_.send(bytesIn(NurseryRequest{0, modules})))
        return failureToReach();
    Result<std::optional<Message>> message = socket_.receive(true);
    if (!message) // no descriptor is free
        return message.failure();
    const NurseryAnswer answer = TRY(structureIn<NurseryAnswer>(message));
    if ((*message)->files.size() != 1)
        return Failure{answer.failure, "cannot start a process"};
    return ForkedWorker{MessageSocket(std::move((*message)->files.front())), answer.worker};
}

void NurseryConnection::endWorker(pid_t worker) {
    if (!owner_.isCurrent())
        return;
    const std::lock_guard lock(mutex_);
    // If the nursery's process has ended, the worker has ended too.
    if (socket_.send(bytesIn(NurseryRequest{worker, 0})))
        (void)socket_.receive(false);
}

WorkerNursery::WorkerNursery(const WorkerProgram& program) : connection_(startCopy(program)) {
    currentNursery = this;
}

WorkerNursery::WorkerNursery(std::string helper)
    : helper_(std::move(helper)), connection_(startHelper(*helper_)) {
    currentNursery = this;
}

WorkerNursery::~WorkerNursery() {
    currentNursery = nullptr;
    connection_->endNursery();
}

std::shared_ptr<NurseryConnection> WorkerNursery::connection() {
    return currentNursery == nullptr ? nullptr : currentNursery->renewedConnection();
}

std::shared_ptr<NurseryConnection> WorkerNursery::renewedConnection() const {
    const std::lock_guard lock(mutex_);
    if (helper_ && !connection_->isUsable()) {
        connection_->endNursery(); // otherwise it would remain as a zombie
        connection_ = startHelper(*helper_);
    }
    return connection_;
}

void runAsNursery(const WorkerProgram& program) { serveNursery(program, helperSocket); }

} // namespace kestrine

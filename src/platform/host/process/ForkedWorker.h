// The start of a worker process: a copy of this process that keeps one connection and nothing else.
#pragma once

#include "platform/host/process/WorkerProgram.h"

#include <sys/types.h>

namespace kestrine {

/// A child process and our end of the connection with it.
struct ForkedWorker {
    MessageSocket socket;
    pid_t process;
};

/// Starts a worker. Its first message is byteOf() the layers that are in force. It ends at the latest when
/// the calling thread ends. Only for a process with one thread.
Result<ForkedWorker> forkWorker(const WorkerProgram& program, std::uint32_t modules);

/// Kills a child process unless it has ended, and waits for its end. Does nothing if it is no longer a child.
void endChild(pid_t process);

/// To be called in a process that was just forked. The process then ends at the latest when the thread that
/// forked it ends, and at once if the process `parent` has ended already.
void endWithParent(pid_t parent);

/// To be called in a process that was just started. Keeps only the descriptor `socket`, which becomes the
/// result; the standard streams are /dev/null. Signals have their default actions, except those of
/// StopSignals.h and SIGQUIT, which a terminal sends to parent and child alike: they are ignored, so that the
/// parent can finish its work. SIGPIPE and SIGXFSZ are ignored as well.
int becomeSubordinate(int socket);

/// The layers as one byte of a message, and back. Bytes that byteOf() does not give count as no layers.
std::uint8_t byteOf(const SandboxLayers& layers);
SandboxLayers layersOf(std::uint8_t byte);

} // namespace kestrine

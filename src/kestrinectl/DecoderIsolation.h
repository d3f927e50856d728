// DecoderIsolation: where a command decodes pictures.
#pragma once

#include "platform/host/process/WorkerNursery.h"
#include "platform/imageio/worker/WorkerEngine.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrine {

enum class IsolationChoice {
    automatic, ///< in worker processes, with the layers that the system offers
    strict,    ///< in worker processes, if all layers are in force
    off,       ///< in this process
};

/// The choice with that name: auto, strict or off.
std::optional<IsolationChoice> isolationNamed(const std::string& name);

/// Decides for the whole process as long as it exists. To be made while the process has one thread; then any
/// number of threads may decode.
class DecoderIsolation {
public:
    /// `jobs`: how many threads convert files. Throws CommandError if layers are missing that `choice` needs.
    DecoderIsolation(IsolationChoice choice, unsigned jobs);
    ~DecoderIsolation();
    DecoderIsolation(const DecoderIsolation&) = delete;
    DecoderIsolation& operator=(const DecoderIsolation&) = delete;

private:
    std::optional<WorkerNursery> nursery_; ///< outlives the engine
    std::optional<WorkerEngine> engine_;
};

/// A row of the table of layers.
struct IsolationLayer {
    std::string name;    ///< for people
    std::string purpose; ///< what it prevents
    bool isInForce;
};

/// What isolates the decoders on this system. Starts a worker to find out.
std::vector<IsolationLayer> isolationLayers();

} // namespace kestrine

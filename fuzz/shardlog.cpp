// Reads any bytes as a line of the log of a run.
#include "kestrinectl/shards/ShardLog.h"
#include "fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const kestrine::LogLine line = kestrine::readLogLine({reinterpret_cast<const char*>(data), size});
    kestrine::fuzzing::require(!line.plan || !line.file);
    return 0;
}

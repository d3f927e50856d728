// ConvertResources: the options that say what a command may use: cores, and processes for decoding.
#pragma once

#include "kestrinectl/DecoderIsolation.h"
#include "platform/host/process/ProcessorCount.h"

#include <CLI/CLI.hpp>
#include <string>

namespace kestrine {

struct ConvertResources {
    unsigned jobs = processorCount();
    std::string isolation = "auto";

    /// Adds the options to a command; it writes into this object, which must outlive the parsing.
    void addTo(CLI::App& command);

    /// How many threads work on so many files.
    unsigned threadsFor(std::size_t count) const;

    /// Decides where pictures are decoded, for as long as the returned object exists.
    DecoderIsolation isolate(unsigned threads) const;
};

} // namespace kestrine

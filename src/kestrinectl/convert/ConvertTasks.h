// ConvertTasks: the files of a run of `convert` as jobs, and their conversion on several threads.
#pragma once

#include "kestrinectl/convert/ConvertChains.h"
#include "kestrinectl/convert/ConvertInputs.h"
#include "kestrinectl/convert/ConvertReport.h"
#include "kestrinectl/convert/UpdateManifest.h"

#include <functional>

namespace kestrine {

struct ConvertTasks {
    const std::vector<ConvertInput>& inputs;
    std::vector<ResizeJob> jobs;
    std::vector<std::size_t> positions; ///< of the input of each job
};

/// One job per input.
ConvertTasks tasksFor(const std::vector<ConvertInput>& inputs, const ConversionRecipes& recipes,
                      JobPolicy policy);

/// Reports files whose results are there and up to date, and removes their tasks.
void removeCurrent(ConvertTasks& tasks, const UpdateManifest& manifest, ConvertReport& report);

/// Converts files and reports them. Returns when all are finished or, after a stop signal, those that were
/// begun. `manifest` may be null; else results of earlier runs are replaced, and new ones noted.
void convertAll(const ConvertTasks& tasks, unsigned threads, UpdateManifest* manifest, ConvertReport& report);

/// What `work` says of a file of so many bytes, with the time that it took. Exceptions become complaints.
ConvertResult resultOf(const std::string& shown, std::uint64_t bytes,
                       const std::function<void(ConvertResult&)>& work);

/// Calls `convert` with each position, those of a chain one after another. Returns when all are finished or,
/// after a stop signal, those that were begun.
void convertChains(const std::vector<ConvertChain>& chains, unsigned threads,
                   const std::function<void(std::size_t)>& convert);

/// Takes the place of the conversion and reports like it.
void convertDry(ConvertTasks tasks, unsigned threads, const UpdateManifest* manifest, ConvertReport& report);

} // namespace kestrine

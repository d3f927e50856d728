#include "kestrinectl/convert/ConvertTasks.h"

#include "kestrinectl/convert/ConvertDryRun.h"
#include "kestrinectl/convert/ConvertKinds.h"
#include "kestrinectl/convert/ConvertOutcome.h"
#include "kestrinectl/convert/ForEachPosition.h"
#include "kestrinectl/text/ShownPath.h"
#include "platform/host/process/StopSignals.h"

#include <exception>

namespace kestrine {

namespace {

using Clock = std::chrono::steady_clock;

ResizeJob jobFor(const ConvertInput& input, const ConversionRecipes& recipes, JobPolicy policy) {
    const NSString path = NSString::fromUTF8(input.path);
    const OptionalString root =
        input.rootFolder ? OptionalString(NSString::fromUTF8(*input.rootFolder)) : std::nullopt;
    return {path, root, path.deletingLastPathComponent(), recipes, policy};
}

std::string warningOfEdited(const std::string& path) {
    return shownPath(path) + " was changed since it was made, and stays";
}

/// Notes the results if all of them are there. If that fails, the next run makes them again.
void note(const ResizeJob& job, const FileMark& source, const std::vector<JobOutcome>& outcomes,
          UpdateManifest& manifest, ConvertResult& result) {
    if (!result.complaints.empty())
        return;
    if (const Result<void> noted = manifest.finished(job, source, outcomes); !noted)
        result.warnings.push_back("the manifest does not name the result (" + noted.failure().text + ")");
}

void runAndAdd(ResizeJob job, const ConvertInput& input, UpdateManifest* manifest, ConvertResult& result) {
    UpdateManifest::Earlier earlier;
    if (manifest != nullptr) {
        earlier = manifest->earlierResults(job);
        job.earlier = earlier.replaceable;
        job.recorder = manifest;
        for (const std::string& path : earlier.edited)
            result.warnings.push_back(warningOfEdited(path));
    }
    const std::vector<JobOutcome> outcomes = runJob(job);
    for (std::size_t i = 0; i < outcomes.size(); ++i)
        addOutcome(result, input, job.recipes[i], outcomes[i]);
    if (manifest != nullptr)
        note(job, earlier.source, outcomes, *manifest, result);
}

} // namespace

ConvertTasks tasksFor(const std::vector<ConvertInput>& inputs, const ConversionRecipes& recipes,
                      JobPolicy policy) {
    ConvertTasks tasks{inputs, {}, {}};
    for (const ConvertInput& input : inputs) {
        tasks.positions.push_back(tasks.jobs.size());
        tasks.jobs.push_back(jobFor(input, recipes, policy));
        tasks.jobs.back().number = tasks.jobs.size();
        tasks.jobs.back().count = inputs.size();
    }
    return tasks;
}

void removeCurrent(ConvertTasks& tasks, const UpdateManifest& manifest, ConvertReport& report) {
    using Status = UpdateManifest::Status;
    ConvertTasks missing{tasks.inputs, {}, {}};
    for (std::size_t i = 0; i < tasks.jobs.size(); ++i) {
        const Status status = manifest.statusOf(tasks.jobs[i]);
        if (status == Status::missing) {
            missing.jobs.push_back(std::move(tasks.jobs[i]));
            missing.positions.push_back(tasks.positions[i]);
            continue;
        }
        ConvertResult result{.source = tasks.inputs[tasks.positions[i]].shown,
                             .status = ConvertStatus::skipped,
                             .reason = "it is up to date",
                             .isUpToDate = true};
        if (status == Status::edited)
            result.warnings.emplace_back("a result was changed since it was made, and stays");
        report.finished(tasks.positions[i], std::move(result));
    }
    tasks.jobs = std::move(missing.jobs);
    tasks.positions = std::move(missing.positions);
}

ConvertResult resultOf(const std::string& shown, std::uint64_t bytes,
                       const std::function<void(ConvertResult&)>& work) {
    const Clock::time_point begin = Clock::now();
    ConvertResult result{.source = shown, .sourceBytes = bytes};
    try {
        work(result);
    } catch (const std::bad_alloc&) {
        result.complain("not enough memory", kindOf(Reason::outOfMemory));
    } catch (const std::exception& error) {
        result.complain(error.what(), "other");
    }
    result.duration = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
    return result;
}

void convertChains(const std::vector<ConvertChain>& chains, unsigned threads,
                   const std::function<void(std::size_t)>& convert) {
    forEachPosition(chains.size(), threads, [&](std::size_t chain) {
        for (const std::size_t position : chains[chain]) {
            if (StopSignalsNoted::noted() != 0)
                return;
            convert(position);
        }
    });
}

void convertAll(const ConvertTasks& tasks, unsigned threads, UpdateManifest* manifest,
                ConvertReport& report) {
    convertChains(independentChains(tasks.jobs, threads), threads, [&](std::size_t i) {
        const std::size_t position = tasks.positions[i];
        const ConvertInput& input = tasks.inputs[position];
        report.finished(position, resultOf(input.shown, input.bytes, [&](ConvertResult& result) {
                            runAndAdd(tasks.jobs[i], input, manifest, result);
                        }));
    });
}

void convertDry(ConvertTasks tasks, unsigned threads, const UpdateManifest* manifest, ConvertReport& report) {
    std::vector<std::string> shown;
    for (std::size_t i = 0; i < tasks.jobs.size(); ++i) {
        shown.push_back(tasks.inputs[tasks.positions[i]].shown);
        if (manifest != nullptr)
            tasks.jobs[i].earlier = manifest->earlierResults(tasks.jobs[i]).replaceable;
    }
    std::vector<ConvertResult> results = dryRun(tasks.jobs, shown, threads);
    for (std::size_t i = 0; i < results.size(); ++i)
        report.finished(tasks.positions[i], std::move(results[i]));
}

} // namespace kestrine

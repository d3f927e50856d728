#include "kestrinectl/convert/ConvertJobs.h"

#include "kestrinectl/convert/ConvertKinds.h"
#include "kestrinectl/convert/ConvertOutcome.h"
#include "kestrinectl/text/ShownPath.h"

#include <exception>

namespace kestrine {

namespace {

using Clock = std::chrono::steady_clock;

std::string warningOfEdited(const std::string& path) {
    return shownPath(path) + " was changed since it was made and is not replaced";
}

/// Notes the results if all of them are there. If that fails, the next run makes them again.
void note(const ResizeJob& job, const FileMark& source, const std::vector<JobOutcome>& outcomes,
          UpdateManifest& manifest, ConvertResult& result) {
    if (!result.complaints.empty())
        return;
    if (const Result<void> noted = manifest.finished(job, source, outcomes); !noted)
        result.warnings.push_back("the manifest does not name the result (" + noted.failure().text + ")");
}

} // namespace

ResizeJob jobFor(const ConvertInput& input, const ConversionRecipes& recipes, JobPolicy policy,
                 std::size_t number, std::size_t count) {
    const NSString path = NSString::fromUTF8(input.path);
    const OptionalString root =
        input.rootFolder ? OptionalString(NSString::fromUTF8(*input.rootFolder)) : std::nullopt;
    ResizeJob job{path, root, path.deletingLastPathComponent(), recipes, policy};
    job.number = number;
    job.count = count;
    return job;
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

std::optional<ConvertResult> resultIfCurrent(const ResizeJob& job, const ConvertInput& input,
                                             UpdateManifest& manifest) {
    using Status = UpdateManifest::Status;
    const Status status = manifest.statusOf(job);
    if (status == Status::missing)
        return std::nullopt;
    ConvertResult result{.source = input.shown,
                         .status = ConvertStatus::skipped,
                         .reason = "it is up to date",
                         .isUpToDate = true};
    if (status == Status::edited)
        result.warnings.emplace_back("a result was changed since it was made and is not replaced");
    return result;
}

void convertJob(ResizeJob job, const ConvertInput& input, UpdateManifest* manifest, ConvertResult& result) {
    UpdateManifest::Earlier earlier;
    if (manifest != nullptr) {
        earlier = manifest->earlierResults(job);
        job.earlier = earlier.replaceable;
        job.recorder = manifest;
        for (const std::string& path : earlier.edited)
            result.warnings.push_back(warningOfEdited(path));
    }
    const std::vector<JobOutcome> outcomes = runJob(job);
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        addOutcome(result, input, job.recipes[i], outcomes[i]);
        if (manifest != nullptr && !outcomes[i].takenPath.empty() && earlier.edited.empty()
            && !manifest->isResult(outcomes[i].takenPath))
            result.warn(shownPath(outcomes[i].takenPath)
                        + " is not known as a result of an earlier run and is not replaced");
    }
    if (manifest != nullptr)
        note(job, earlier.source, outcomes, *manifest, result);
}

} // namespace kestrine

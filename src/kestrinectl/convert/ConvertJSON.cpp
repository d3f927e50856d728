#include "kestrinectl/convert/ConvertJSON.h"

#include "kestrinectl/text/JSONText.h"
#include "platform/host/process/StopSignals.h"

namespace kestrine {

namespace {

using nlohmann::ordered_json;

/// The names in JSON, in the order of ConvertStatus.
constexpr const char* statusNames[] = {"done", "skipped", "failed", "left-out", "would"};

/// null for 0, which stands for unknown figures.
ordered_json knownNumber(std::uint64_t number) { return number == 0 ? ordered_json() : ordered_json(number); }

ordered_json toJSON(const ConvertOutput& output) {
    ordered_json object = {
        {"path", textToJSON(output.path)},
        {"set", output.set ? textToJSON(*output.set) : ordered_json()},
        {"format", output.format == nullptr ? ordered_json() : ordered_json(output.format->name)},
        {"width", knownNumber(output.width)},
        {"height", knownNumber(output.height)},
        {"bytes", knownNumber(output.bytes)},
        {"copied", output.isCopy}};
    if (output.content) {
        object["digest"] = output.content->digest;
        object["modified"] = output.content->modified;
    }
    return object;
}

/// null if there is none.
ordered_json reasonOf(const ConvertResult& result) {
    std::string reason = result.reason;
    for (const ConvertComplaint& complaint : result.complaints)
        reason += (reason.empty() ? "" : "; ") + complaint.text;
    return reason.empty() ? ordered_json() : textToJSON(reason);
}

ordered_json kindOf(const ConvertResult& result) {
    return result.complaints.empty() ? ordered_json() : ordered_json(result.complaints.front().kind);
}

ordered_json warningsOf(const ConvertResult& result) {
    ordered_json warnings = ordered_json::array();
    for (const std::string& warning : result.warnings)
        warnings.push_back(textToJSON(warning));
    return warnings;
}

ordered_json outputsOf(const ConvertResult& result) {
    ordered_json outputs = ordered_json::array();
    for (const ConvertOutput& output : result.outputs)
        outputs.push_back(toJSON(output));
    return outputs;
}

} // namespace

ordered_json toJSON(const ConvertResult& result) {
    return {{"source", textToJSON(result.source)},
            {"status", statusNames[static_cast<std::size_t>(result.status)]},
            {"outputs", outputsOf(result)},
            {"reason", reasonOf(result)},
            {"kind", kindOf(result)},
            {"warnings", warningsOf(result)},
            {"ms", result.duration.count()}};
}

ordered_json toJSON(const ConvertTotals& totals, const ConvertEnd& end) {
    ordered_json run = ordered_json::object();
    for (std::size_t i = 0; i < totals.files.size(); ++i)
        run[statusNames[i]] = totals.files[i];
    run["unreadableFolders"] = totals.folderFailures;
    run["otherFiles"] = totals.otherFiles;
    run["left"] = end.left;
    run["outputs"] = totals.outputs;
    run["bytesBefore"] = totals.bytesBefore;
    run["bytesAfter"] = totals.bytesAfter;
    run["failures"] = ordered_json::object();
    for (const auto& [kind, count] : totals.failures)
        run["failures"][std::string(kind)] = count;
    run["signal"] = end.signal == 0 ? ordered_json() : ordered_json(nameOfStopSignal(end.signal));
    run["exitStatus"] = end.exitStatus;
    run["journal"] = knownNumber(end.journal);
    run["ms"] = end.duration.count();
    return {{"run", std::move(run)}};
}

} // namespace kestrine

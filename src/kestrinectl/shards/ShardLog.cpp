#include "kestrinectl/shards/ShardLog.h"

#include "kestrinectl/convert/ConvertJSON.h"
#include "kestrinectl/text/JSONText.h"
#include "kestrinectl/text/ShownPath.h"
#include "platform/host/files/ContentDigest.h"
#include "platform/host/files/FileMark.h"

namespace kestrine {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr int logVersion = 1;

LoggedResult resultFromJSON(const json& object) {
    return {.path = textIn(object.at("path")),
            .bytes = object.at("bytes").get<std::uint64_t>(),
            .content = {object.at("digest").get<std::uint64_t>(), object.at("modified").get<std::int64_t>()}};
}

LoggedFile fileFromJSON(const json& object) {
    LoggedFile file{.record = object.at("record").get<std::uint64_t>(),
                    .source = textIn(object.at("source")),
                    .isDone = object.at("status") != "failed",
                    .reason = object.at("reason").is_null() ? "" : textIn(object.at("reason")),
                    .results = {}};
    for (const json& result : object.at("outputs"))
        file.results.push_back(resultFromJSON(result));
    return file;
}

} // namespace

bool isInPlace(const LoggedResult& result, const RootFolder& root) {
    const std::string path = root.absolute(result.path);
    const Result<FileMark> mark = markOfItem(path);
    if (!mark || mark->bytes != result.bytes)
        return false;
    if (mark->modified == result.content.modified)
        return true;
    const Result<ContentDigest> content = digestOfFile(path);
    return content && content->number == result.content.digest;
}

LogLine readLogLine(const std::string& line) {
    try {
        const json object = json::parse(line);
        if (object.contains("log"))
            return {.plan = object.at("log").at("plan").get<std::uint64_t>(),
                    .file = {},
                    .isOfOtherVersion = object.at("log").at("version") != logVersion};
        if (object.contains("record"))
            return {.plan = {}, .file = fileFromJSON(object)};
    } catch (const json::exception&) {
        return {};
    }
    return {};
}

CommandError logOfOtherVersion(const std::string& path) {
    return CommandError("the log " + shownPath(path)
                        + " is from another version of kestrinectl; use that version, or remove the log");
}

ordered_json toJSON(const ConvertResult& result, std::uint64_t record) {
    ordered_json object = toJSON(result);
    object["record"] = record;
    return object;
}

ShardLog::ShardLog(const std::string& path, std::uint64_t plan, Shard shard, WhenBusy whenBusy)
    : log_(openLockedLog("log", path, whenBusy)) {
    const Result<std::vector<std::string>> lines = log_.lines();
    if (!lines)
        throw CommandError("the log cannot be read: " + lines.failure().text);
    for (const std::string& line : *lines)
        read(line, plan);
    if (hasPlan_)
        return;
    const ordered_json begin = {
        {"log", {{"version", logVersion}, {"plan", plan}, {"shard", shard.number}, {"of", shard.count}}}};
    const Result<void> written =
        lines->empty() ? log_.begin(begin.dump()) : Failure{Reason::malformed, "it contains other lines"};
    if (!written && written.failure().reason == Reason::malformed)
        throw CommandError(shownPath(path)
                           + " is not a log of 'kestrinectl run'; give another file with --log");
    if (!written)
        throw CommandError("the log cannot be written: " + written.failure().text);
}

void ShardLog::read(const std::string& line, std::uint64_t plan) {
    LogLine known = readLogLine(line);
    if (known.isOfOtherVersion)
        throw logOfOtherVersion(log_.path());
    if (known.plan && *known.plan != plan)
        throw CommandError("the log " + shownPath(log_.path())
                           + " belongs to another plan; remove it, or give another file with --log");
    hasPlan_ = hasPlan_ || known.plan.has_value();
    if (!known.file)
        return;
    if (!known.file->isDone && files_.contains(known.file->record))
        known.file->results = files_[known.file->record].results; // they are still ours
    files_[known.file->record] = std::move(*known.file);
}

const LoggedFile* ShardLog::find(std::uint64_t record) const {
    const auto found = files_.find(record);
    return found == files_.end() ? nullptr : &found->second;
}

Result<void> ShardLog::add(const ordered_json& line) { return log_.append(line.dump(), Durability::cached); }

} // namespace kestrine

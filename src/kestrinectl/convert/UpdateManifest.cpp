#include "kestrinectl/convert/UpdateManifest.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/GivenPaths.h"
#include "kestrinectl/StateFolder.h"
#include "kestrinectl/text/JSONText.h"
#include "kestrinectl/text/ShownPath.h"
#include "models/RecipeDigest.h"
#include "models/ResultPlace.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"

#include <algorithm>

namespace kestrine {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr int manifestVersion = 1;
constexpr std::size_t superfluousLines = 1000; ///< that are accepted before the file is written anew

std::string hexadecimal(std::uint64_t number) {
    std::string digits;
    for (int shift = 60; shift >= 0; shift -= 4)
        digits += "0123456789abcdef"[number >> shift & 15];
    return digits;
}

LineLog openManifest(const std::string& path, WhenBusy whenBusy) {
    const bool isInStateFolder = path.starts_with(stateFolder("manifests"));
    const Result<void> made = isInStateFolder ? makePrivateFolders(folderOf(path)) : Result<void>();
    if (!made)
        throw CommandError("the manifest cannot be written: " + made.failure().text);
    return openLockedLog("manifest", path, whenBusy);
}

std::vector<std::string> valueOrError(Result<std::vector<std::string>> lines) {
    if (!lines)
        throw CommandError("the manifest cannot be read: " + lines.failure().text);
    return *std::move(lines);
}

CommandError anotherFile(const std::string& path) {
    return CommandError(shownPath(path)
                        + " is not a manifest of kestrinectl; give another file with --manifest");
}

std::string headerLine() { return ordered_json{{"manifest", manifestVersion}}.dump(); }

std::string text(const json& object, const char* key) { return textIn(object.at(key)); }

} // namespace

UpdateManifest::UpdateManifest(const std::string& path, WhenBusy whenBusy, Paths paths)
    : log_(openManifest(path, whenBusy)), base_(baseFor(path, paths)) {
    const std::vector<std::string> lines = valueOrError(log_->lines());
    read(path, lines);
    const Result<void> written = lines.empty() ? log_->begin(headerLine()) : Result<void>();
    if (!written && written.failure().reason == Reason::malformed)
        throw anotherFile(path);
    if (!written)
        throw CommandError("the manifest cannot be written: " + written.failure().text);
    shorten(lines.size());
}

UpdateManifest::UpdateManifest(const std::string& path, Paths paths) : base_(baseFor(path, paths)) {
    read(path, valueOrError(LineLog::linesOf(path)));
}

std::string UpdateManifest::baseFor(const std::string& path, Paths paths) {
    return paths == Paths::relative ? canonicalPath(folderOf(path)).native() : std::string();
}

void UpdateManifest::read(const std::string& path, const std::vector<std::string>& lines) {
    for (const std::string& line : lines) {
        read(line);
        if (version_ == 0)
            throw anotherFile(path);
        if (version_ > manifestVersion)
            throw CommandError(
                "the manifest " + path
                + " is from a newer version of kestrinectl; use that version, or another manifest");
    }
}

std::string UpdateManifest::pathFor(const std::string& outFolder) {
    const std::string name = outFolder.empty()
                                 ? "beside-originals"
                                 : hexadecimal(digestOf(canonicalPath(outFolder).native()).number);
    return joinedPath(stateFolder("manifests"), name + ".jsonl");
}

/// A line that is damaged, such as one cut off by a full disk, counts as absent.
void UpdateManifest::read(const std::string& line) {
    const auto path = [this](const json& object, const char* key) { return restored(text(object, key)); };
    const auto madeFile = [&](const json& object) {
        return MadeFile{
            .wanted = path(object, "wanted"),
            .path = path(object, "path"),
            .mark = {.bytes = object.at("bytes"), .modified = object.value("modified", std::int64_t{0})},
            .content = {object.at("bytes"), object.at("digest")}};
    };
    try {
        const json object = json::parse(line);
        if (object.contains("manifest")) {
            version_ = object.at("manifest").get<int>();
        } else if (object.contains("making")) {
            const std::string source = path(object, "making");
            sources_[source].intended.push_back(madeFile(object));
            addResult(source, sources_[source].intended.back().path);
        } else {
            Made made{.source = {.bytes = object.at("bytes"), .modified = object.at("modified")},
                      .content = {},
                      .options = object.at("options").get<std::string>(),
                      .files = {}};
            if (object.contains("digest"))
                made.content = object.at("digest").get<std::uint64_t>();
            for (const json& file : object.at("results"))
                made.files.push_back(madeFile(file));
            add(path(object, "made"), std::move(made));
        }
    } catch (const json::exception&) {
        return;
    }
}

/// Results that took the place of others end those.
void UpdateManifest::add(const std::string& source, Made made) {
    Source& known = sources_[source];
    std::erase_if(known.made, [&](const Made& other) { return other.options == made.options; });
    known.intended.clear();
    for (const MadeFile& file : made.files)
        replaceResult(source, file.path);
    known.made.push_back(std::move(made));
}

/// Notes a result that may not be there yet.
void UpdateManifest::addResult(const std::string& source, const std::string& path) {
    results_.try_emplace(keyOf(path), &sources_.find(source)->first);
}

/// Notes a result; earlier ones at its path are gone.
void UpdateManifest::replaceResult(const std::string& source, const std::string& path) {
    const std::string*& owner = results_[keyOf(path)];
    const auto isThere = [&](const MadeFile& file) { return file.path == path; };
    for (const std::string* each : {owner, &source})
        if (each != nullptr)
            std::erase_if(sources_[*each].made,
                          [&](const Made& other) { return std::ranges::any_of(other.files, isThere); });
    owner = &sources_.find(source)->first;
}

bool UpdateManifest::isResult(const std::string& path) const {
    const std::lock_guard lock(mutex_);
    const std::string place = keyOf(path);
    const auto found = results_.find(place);
    return found != results_.end() && *found->second != place;
}

/// The path as it is stored in a line of the manifest.
std::string UpdateManifest::stored(const std::string& path) const {
    const std::string start = base_ == "/" ? base_ : base_ + "/";
    return !base_.empty() && path.starts_with(start) ? path.substr(start.size()) : path;
}

std::string UpdateManifest::restored(const std::string& path) const {
    return base_.empty() || path.starts_with('/') ? path : joinedPath(base_, path);
}

/// Whether a file looks as before, or only its time has changed.
bool UpdateManifest::isUnchanged(const std::string& path, const FileMark& mark, const FileMark& before,
                                 const std::optional<std::uint64_t>& content) {
    if (mark.looksLike(before))
        return true;
    if (mark.bytes != before.bytes || !content)
        return false;
    const Result<ContentDigest> digest = digestOfFile(path);
    return digest && *digest == ContentDigest{before.bytes, *content};
}

const std::string& UpdateManifest::folderWithoutLinks(const std::string& folder) const {
    const auto [place, isNew] = folders_.try_emplace(folder);
    if (isNew)
        place->second = canonicalPath(folder).native();
    return place->second;
}

std::string UpdateManifest::keyOf(const std::string& path) const {
    return joinedPath(folderWithoutLinks(folderOf(path)), nameOf(path));
}

/// Everything that affects a job's results besides the content of its source.
std::string UpdateManifest::optionsOf(const ResizeJob& job) const {
    if (recipes_ != job.recipes) {
        recipes_ = job.recipes;
        ConversionRecipes movable = recipes_;
        for (ConversionRecipe& recipe : movable)
            if (recipe.place.base)
                recipe.place.base = NSString::fromUTF8(stored(recipe.place.base->utf8()));
        recipesText_ = textOf(movable);
    }
    std::string options = std::to_string(outputVersion) + recipesText_;
    for (const ConversionRecipe& recipe : job.recipes) // only the folder: rootPath depends on the search
        if (const OptionalString folder = folderFor(recipe.place, job.saveFolderPath, job.rootPath))
            options += " " + stored(folderWithoutLinks(folder->utf8()));
    if (numbersNames(job.recipes))
        options += " " + std::to_string(job.number) + " " + std::to_string(job.count);
    return hexadecimal(digestOf(options).number);
}

bool UpdateManifest::isOurs(const Source& source, const std::string& path, const FileMark& mark) const {
    for (const Made& made : source.made)
        for (const MadeFile& file : made.files)
            if (file.path == path && isUnchanged(path, mark, file.mark, file.content.number))
                return true;
    const auto intended = std::ranges::find(source.intended, path, &MadeFile::path);
    const auto content =
        intended == source.intended.end() ? Failure{Reason::notFound, ""} : digestOfFile(path);
    return content && std::ranges::any_of(source.intended, [&](const MadeFile& file) {
               return file.path == path && file.content == *content;
           });
}

UpdateManifest::Status UpdateManifest::statusOf(const ResizeJob& job) {
    const std::lock_guard lock(mutex_);
    const auto source = sources_.find(keyOf(job.path.utf8()));
    if (source == sources_.end())
        return Status::missing;
    const auto made = std::ranges::find(source->second.made, optionsOf(job), &Made::options);
    const Result<FileMark> mark = markOfFile(source->first);
    if (made == source->second.made.end() || !mark
        || !isUnchanged(source->first, *mark, made->source, made->content))
        return Status::missing;
    Status status = Status::current;
    Made newest = *made;
    newest.source = *mark;
    for (MadeFile& file : newest.files) {
        const Result<FileMark> there = markOfFile(file.path);
        if (there && isUnchanged(file.path, *there, file.mark, file.content.number)) {
            file.mark = *there;
            continue;
        }
        if (!there || isOurs(source->second, file.path, *there))
            return Status::missing;
        status = Status::edited;
    }
    if (status == Status::current)
        noteTimes(source->first, *made, std::move(newest));
    return status;
}

/// So that later runs need not read the files. If that fails, they do.
void UpdateManifest::noteTimes(const std::string& source, Made& made, Made newest) {
    const bool areKnown =
        newest.source.looksLike(made.source)
        && std::ranges::equal(newest.files, made.files, [](const MadeFile& now, const MadeFile& before) {
               return now.mark.looksLike(before.mark);
           });
    if (areKnown)
        return;
    made = std::move(newest);
    if (log_)
        (void)log_->append(lineOf(source, made), Durability::cached);
}

UpdateManifest::Earlier UpdateManifest::earlierResults(const ResizeJob& job) const {
    const std::lock_guard lock(mutex_);
    Earlier earlier;
    if (const Result<FileMark> mark = markOfFile(job.path.utf8()))
        earlier.source = *mark;
    const auto source = sources_.find(keyOf(job.path.utf8()));
    if (source == sources_.end())
        return earlier;
    std::map<std::string, std::vector<MadeFile>> files; ///< by path
    for (const Made& made : source->second.made)
        for (const MadeFile& file : made.files)
            files[file.path].push_back(file);
    for (const MadeFile& file : source->second.intended)
        files[file.path].push_back(file);
    for (const auto& [path, known] : files) {
        const Result<ContentDigest> content = digestOfFile(path);
        const auto ours = content ? std::ranges::find(known, *content, &MadeFile::content) : known.end();
        if (ours != known.end())
            earlier.replaceable.push_back({ours->wanted, path, *content});
        else if (content)
            earlier.edited.push_back(path);
    }
    return earlier;
}

std::optional<EarlierResult> UpdateManifest::takeAbandonedResult(const std::string& path) {
    const std::lock_guard lock(mutex_);
    const auto owner = results_.find(keyOf(path));
    if (owner == results_.end() || !isAbsent(*owner->second))
        return std::nullopt;
    for (Made& made : sources_[*owner->second].made) {
        const auto file = std::ranges::find(made.files, path, &MadeFile::path);
        if (file == made.files.end())
            continue;
        const Result<ContentDigest> content = digestOfFile(path);
        if (!content || *content != file->content)
            return std::nullopt;
        made.files.erase(file);
        return EarlierResult{path, path, *content};
    }
    return std::nullopt;
}

std::string UpdateManifest::intentionLine(const std::string& source, const MadeFile& file) const {
    return ordered_json{{"making", textToJSON(stored(source))},
                        {"wanted", textToJSON(stored(file.wanted))},
                        {"path", textToJSON(stored(file.path))},
                        {"bytes", file.content.bytes},
                        {"digest", file.content.number}}
        .dump();
}

Result<void> UpdateManifest::record(const IntendedResult& result) {
    const std::lock_guard lock(mutex_);
    const std::string source = keyOf(result.source);
    std::vector<MadeFile>& intended = sources_[source].intended;
    intended.push_back({.wanted = result.wanted, .path = result.path, .mark = {}, .content = result.content});
    addResult(source, result.path);
    return log_->append(intentionLine(source, intended.back()), Durability::cached);
}

Result<void> UpdateManifest::finished(const ResizeJob& job, const FileMark& source,
                                      const std::vector<JobOutcome>& outcomes) {
    const Result<ContentDigest> content = digestOfFile(job.path.utf8()); // takes long, so not under the lock
    const Result<FileMark> now = markOfFile(job.path.utf8());
    const std::lock_guard lock(mutex_);
    const std::string path = keyOf(job.path.utf8());
    const std::vector<MadeFile>& intended = sources_[path].intended;
    Made made{.source = source, .content = {}, .options = optionsOf(job), .files = {}};
    if (content && now && now->looksLike(source)) // it is what was converted
        made.content = content->number;
    for (const JobOutcome& outcome : outcomes) {
        const auto file = std::find_if(intended.rbegin(), intended.rend(), [&](const MadeFile& each) {
            return outcome.isWritten && each.path == outcome.path.utf8();
        });
        if (file == intended.rend())
            continue;
        made.files.push_back(*file);
        made.files.back().mark = TRY(markOfFile(file->path));
    }
    if (made.files.empty())
        return {};
    add(path, std::move(made));
    return log_->append(lineOf(path, sources_[path].made.back()), Durability::cached);
}

std::string UpdateManifest::lineOf(const std::string& source, const Made& made) const {
    ordered_json results = ordered_json::array();
    for (const MadeFile& file : made.files)
        results.push_back({{"wanted", textToJSON(stored(file.wanted))},
                           {"path", textToJSON(stored(file.path))},
                           {"bytes", file.mark.bytes},
                           {"modified", file.mark.modified},
                           {"digest", file.content.number}});
    ordered_json line{{"made", textToJSON(stored(source))},
                      {"bytes", made.source.bytes},
                      {"modified", made.source.modified}};
    if (made.content)
        line["digest"] = *made.content;
    line["options"] = made.options;
    line["results"] = std::move(results);
    return line.dump();
}

/// Writes the file anew when most of its lines are superseded. Errors are ignored; all lines are still there.
void UpdateManifest::shorten(std::size_t lineCount) {
    if (lineCount < superfluousLines + 2 * sources_.size())
        return;
    std::vector<std::string> lines = {headerLine()};
    for (const auto& [source, known] : sources_) {
        for (const Made& made : known.made)
            lines.push_back(lineOf(source, made));
        for (const MadeFile& file : known.intended)
            lines.push_back(intentionLine(source, file));
    }
    (void)log_->rewrite(lines);
}

} // namespace kestrine

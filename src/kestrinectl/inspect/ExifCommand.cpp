#include "kestrinectl/inspect/ExifCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/DecoderIsolation.h"
#include "kestrinectl/inspect/ExifFile.h"
#include "kestrinectl/inspect/ExifJSON.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/ShownPath.h"
#include "kestrinectl/text/Words.h"
#include "platform/foundation/FileCreationDate.h"
#include "platform/foundation/LocalTime.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileHandle.h"
#include "platform/host/FailureCollector.h"

#include <iostream>

namespace kestrine {

namespace {

/// What is printed for one file, and what it lacks ("" if nothing). `reader` may be null.
struct Answer {
    std::string lines;
    std::string lack;
};
using Ask = Answer (*)(const NSString& path, ExifTagReader* reader);

constexpr const char* noData = "no EXIF data";
constexpr const char* noDate = "no date";

bool hasTags(ExifTagReader* reader) {
    const TagDictionaryPointer tags = reader == nullptr ? nullptr : reader->tagDictionary();
    return tags != nullptr && !tags->empty();
}

Answer description(const NSString&, ExifTagReader* reader) {
    if (!hasTags(reader))
        return {"", noData};
    const std::string text = reader->tagDescription().utf8();
    return {text.ends_with('\n') ? text : text + "\n", ""};
}

Answer asJSON(const NSString& path, ExifTagReader* reader) {
    return {exifJSON(path, reader).dump() + "\n", hasTags(reader) ? "" : noData};
}

Answer date(const NSString&, ExifTagReader* reader) {
    const OptionalDate date = reader == nullptr ? std::nullopt : reader->creationDate();
    return date ? Answer{isoText(*date) + "\n", ""} : Answer{"", noDate};
}

/// changeCreationDate() reports nothing, so the date is read back.
Answer setCreationDate(const NSString& path, ExifTagReader* reader) {
    const OptionalDate date = reader == nullptr ? std::nullopt : reader->correctedCreationDate();
    if (!date)
        return {"", std::string(noDate) + ", nothing changed"};
    const FailureCollector collector;
    reader->changeCreationDate();
    if (!collector.failures().empty())
        throw CommandError("the creation date cannot be set: "
                           + withoutPath(collector.failures().front().text, path.utf8()));
    if (fileCreationDateText(path.utf8()) != isoText(*date))
        throw CommandError("the creation date cannot be set: the file system does not keep it");
    return {"creation date set to " + isoText(*date) + "\n", ""};
}

/// Throws CommandError with the reason when there is no result.
Answer answerFor(const NSString& path, Ask ask, ExifReach reach) {
    try {
        return ask(path, exifReaderOf(path, reach).get());
    } catch (const NSException& raised) {
        throw CommandError("damaged tag (" + raised.name() + ": " + raised.reason() + ")");
    }
}

/// With `isNamed`, the file's name is printed before a single line and above a description, which has
/// several. JSON contains the name.
void print(const std::string& file, const std::string& text, Ask ask, bool isNamed) {
    if (ask == asJSON)
        std::cout << text; // JSON has its own escapes
    else if (!text.empty())
        printLines((isNamed ? file + (ask == description ? ":\n" : ": ") : "") + text);
}

/// A file that cannot be read gives no output, except in JSON, which has one line per file. Throws
/// CommandError when something is missing.
void answerForOne(const std::string& file, Ask ask, ExifReach reach, bool isNamed) {
    const NSString path = NSString::fromUTF8(file);
    const FailureCollector collector;
    const bool canBeRead = NSFileHandle::fileHandleForReadingAtPath(path) != nullptr;
    Answer answer;
    if (canBeRead || ask == asJSON)
        answer = answerFor(path, ask, reach);
    print(file, answer.lines, ask, isNamed);
    if (!collector.failures().empty() && !(canBeRead && reach == ExifReach::all))
        throw CommandError(withoutPath(collector.failures().front().text, file));
    if (!answer.lack.empty())
        throw CommandError(answer.lack);
}

void answerForAll(const std::vector<std::string>& words, Ask ask, ExifReach reach) {
    const DecoderIsolation isolation(IsolationChoice::automatic, 1);
    std::string failures;
    for (const std::string& word : words) {
        const std::string file = typedWord(word);
        try {
            answerForOne(file, ask, reach, words.size() > 1);
        } catch (const CommandError& error) {
            failures += (failures.empty() ? "" : "; ")
                        + (file.empty() ? "an empty argument names no file" : file + ": " + error.what());
        }
    }
    if (!failures.empty())
        throw CommandError(failures);
}

struct ExifRequest {
    std::vector<std::string> files;
    bool json = false;
    bool date = false;
    bool setCreationDate = false;
    bool isNarrow = false;

    Ask ask() const {
        return json              ? kestrine::asJSON
               : date            ? kestrine::date
               : setCreationDate ? kestrine::setCreationDate
                                 : description;
    }
};

} // namespace

void addExifCommand(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("exif", "Show the EXIF data of pictures (default: a description in words)");
    auto request = std::make_shared<ExifRequest>();
    command
        ->add_option("FILE", request->files,
                     "Pictures of any format with EXIF data, raw files with a TIFF structure included")
        ->required();
    CLI::Option* inJSON =
        command->add_flag("--json", request->json, "Print everything, as one JSON object per line");
    CLI::Option* asDate = command->add_flag("--date", request->date,
                                            "Print only the date when the picture was taken, in local time");
    CLI::Option* changes = command->add_flag(
        "--set-creation-date", request->setCreationDate,
        "Set the creation date of the file to the date when the picture was taken, shifted by the time zone "
        "that the camera stored, or by -9 hours if it stored none");
    command->add_flag(
        "--narrow", request->isNarrow,
        "Show only what decides whether presets turn a picture: big-endian data at the start of files "
        "named .jpg or .jpeg (default: either byte order, every place and format)");
    inJSON->excludes(asDate)->excludes(changes);
    asDate->excludes(changes);
    command->callback([request] {
        answerForAll(request->files, request->ask(), request->isNarrow ? ExifReach::narrow : ExifReach::all);
    });
}

} // namespace kestrine

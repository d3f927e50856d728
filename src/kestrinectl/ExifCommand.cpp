#include "kestrinectl/ExifCommand.h"

#include "_MyClasses/Class/ExifTag/ExifTagReader.h"
#include "kestrinectl/CommandError.h"
#include "kestrinectl/DecoderIsolation.h"
#include "kestrinectl/ExifJSON.h"
#include "kestrinectl/Messages.h"
#include "kestrinectl/ShownPath.h"
#include "kestrinectl/Words.h"
#include "platform/foundation/FileCreationDate.h"
#include "platform/foundation/LocalTime.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileHandle.h"
#include "platform/host/FailureCollector.h"

#include <iostream>

namespace kestrine {

namespace {

/// The lines that are printed for one file. Throws CommandError for a failure.
using Answer = std::string (*)(const NSString& path);

std::string description(const NSString& path) {
    const std::string text = ExifTagReader::tagDescriptionWithPath(path).utf8();
    return text.ends_with('\n') ? text : text + "\n";
}

std::string asJSON(const NSString& path) { return exifJSON(path).dump() + "\n"; }

std::string date(const NSString& path) {
    const OptionalDate date = ExifTagReader::creationDateWithPath(path);
    return (date ? isoText(*date) : "no date") + "\n";
}

/// changeCreationDate() reports nothing, so the date is read back.
std::string setCreationDate(const NSString& path) {
    const auto reader = ExifTagReader::initWithPath(path);
    const OptionalDate date = reader ? reader->correctedCreationDate() : std::nullopt;
    if (!date)
        return "no date, nothing changed\n";
    reader->changeCreationDate();
    if (fileCreationDateText(path.utf8()) != isoText(*date))
        throw CommandError("the creation date could not be set");
    return "creation date set to " + isoText(*date) + "\n";
}

/// Throws CommandError with the reason when there is no result.
std::string answerFor(const NSString& path, Answer answer) {
    try {
        return answer(path);
    } catch (const NSException& raised) {
        throw CommandError("damaged tag (" + raised.name() + ": " + raised.reason() + ")");
    }
}

/// With `isNamed`, the file's name is printed before a single line and above a description, which has
/// several. JSON contains the name.
void print(const std::string& file, const std::string& text, Answer answer, bool isNamed) {
    if (answer == asJSON)
        std::cout << text; // JSON has its own escapes
    else
        printLines((isNamed ? file + (answer == description ? ":\n" : ": ") : "") + text);
}

/// A file that cannot be read gives no output, except in JSON, which has one line per file.
void answerForOne(const std::string& file, Answer answer, bool isNamed) {
    const NSString path = NSString::fromUTF8(file);
    const FailureCollector collector;
    const bool canBeRead = NSFileHandle::fileHandleForReadingAtPath(path) != nullptr;
    if (canBeRead || answer == asJSON)
        print(file, answerFor(path, answer), answer, isNamed);
    if (!collector.failures().empty())
        throw CommandError(withoutPath(collector.failures().front().text, file));
}

void answerForAll(const std::vector<std::string>& words, Answer answer) {
    const DecoderIsolation isolation(IsolationChoice::automatic, 1);
    std::string failures;
    for (const std::string& word : words) {
        const std::string file = typedWord(word);
        try {
            answerForOne(file, answer, words.size() > 1);
        } catch (const CommandError& error) {
            failures += (failures.empty() ? "" : "; ") + file + ": " + error.what();
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

    Answer answer() const {
        return json              ? kestrine::asJSON
               : date            ? kestrine::date
               : setCreationDate ? kestrine::setCreationDate
                                 : description;
    }
};

} // namespace

void addExifCommand(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("exif", "Show the EXIF data of JPEG files (default: a description in words)");
    auto request = std::make_shared<ExifRequest>();
    command->add_option("FILE", request->files, "Files named .jpg or .jpeg")->required();
    CLI::Option* inJSON =
        command->add_flag("--json", request->json, "Print everything, as one JSON object per line");
    CLI::Option* asDate = command->add_flag("--date", request->date,
                                            "Print only the date when the picture was taken, in local time");
    CLI::Option* changes = command->add_flag(
        "--set-creation-date", request->setCreationDate,
        "Set the creation date of the file to the date when the picture was taken, shifted by the time zone "
        "that the camera stored, or by -9 hours if it stored none");
    inJSON->excludes(asDate)->excludes(changes);
    asDate->excludes(changes);
    command->callback([request] { answerForAll(request->files, request->answer()); });
}

} // namespace kestrine

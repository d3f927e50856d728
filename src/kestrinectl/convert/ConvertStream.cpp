#include "kestrinectl/convert/ConvertStream.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/OpenedInput.h"
#include "kestrinectl/convert/ConvertOutcome.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "platform/host/files/MemoryFile.h"
#include "platform/host/process/AvailableMemory.h"
#include "platform/host/process/StandardOutput.h"
#include "platform/host/process/Terminal.h"

namespace kestrine {

namespace {

[[noreturn]] void throwUnreadable(const std::string& reason) {
    throw CommandError(std::string(nameOfStandardInput) + " cannot be read: " + reason);
}

/// The whole standard input, in a memory file that the decoding process reads without a second copy. Half of
/// the available memory is left for decoding.
std::shared_ptr<const ByteReader> standardInput() {
    const std::uint64_t limit = availableMemory() / 2;
    Result<MemoryFile> copy = MemoryFile::create();
    if (!copy)
        throwUnreadable(copy.failure().text);
    std::uint64_t size = 0;
    readStandardInput([&](std::string_view part) {
        const ByteView bytes(reinterpret_cast<const std::uint8_t*>(part.data()), part.size());
        if (Result<void> written = copy->write(bytes, size); !written)
            throwUnreadable(written.failure().text);
        size += part.size();
        if (size > limit)
            throwUnreadable("it has more than " + shownBytes(limit)
                            + ", half of the available memory; save it as a file and convert that");
    });
    return readerOfFile(std::move(*copy).release(), size);
}

void writeToStandardOutput(const NSData& data) {
    StandardOutput output;
    const ByteView bytes = data.bytes();
    output.write({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    if (output.failed())
        throw CommandError("the output could not be written");
}

} // namespace

void convertStream(const ConversionRecipe& recipe, JobPolicy policy, ConvertDetail detail) {
    if (isTerminal(OutputStream::standardOutput))
        throw CommandError("the result is a picture; redirect standard output to a file", 2);
    const ResizeJob job{.recipes = {recipe}, .policy = policy, .content = standardInput()};
    const JobOutcome outcome = runJob(job).front();
    ConvertResult result{.source = nameOfStandardInput};
    addOutcome(result, {nameOfStandardInput, "", std::nullopt}, recipe, outcome);
    printMessages(result, detail);
    if (outcome.data == nullptr)
        throw CommandError("the picture could not be converted as requested");
    writeToStandardOutput(*outcome.data);
}

} // namespace kestrine

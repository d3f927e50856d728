#include "kestrinectl/convert/ConvertStream.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/convert/ConvertOutcome.h"
#include "kestrinectl/text/Messages.h"
#include "platform/host/process/StandardOutput.h"
#include "platform/host/process/Terminal.h"

#include <iostream>
#include <iterator>

namespace kestrine {

namespace {

constexpr const char* shownInput = "standard input";

Bytes standardInput() {
    Bytes bytes;
    char part[1 << 16];
    while (std::cin.read(part, sizeof part) || std::cin.gcount() > 0)
        bytes.insert(bytes.end(), part, part + std::cin.gcount());
    return bytes;
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
    const ResizeJob job{.recipes = {recipe}, .policy = policy, .content = readerOfBytes(standardInput())};
    const JobOutcome outcome = runJob(job).front();
    ConvertResult result{.source = shownInput};
    addOutcome(result, {shownInput, "", std::nullopt}, recipe, outcome);
    printMessages(result, detail);
    if (outcome.data == nullptr)
        throw CommandError("the picture could not be converted as requested");
    writeToStandardOutput(*outcome.data);
}

} // namespace kestrine

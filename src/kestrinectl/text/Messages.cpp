#include "kestrinectl/text/Messages.h"

#include "kestrinectl/text/ShownText.h"
#include "platform/host/process/Terminal.h"

#include <iostream>

namespace kestrine {

void printLine(const std::string& line) {
    std::cout << shownText(line, isTerminal(OutputStream::standardOutput)) << "\n" << std::flush;
}

void printLines(const std::string& lines) {
    for (std::size_t begin = 0; begin < lines.size();) {
        const std::size_t end = std::min(lines.find('\n', begin), lines.size());
        printLine(lines.substr(begin, end - begin));
        begin = end + 1;
    }
}

void printError(const std::string& message) {
    // One call, so that a message is written whole or not at all.
    std::cerr << "kestrinectl: " + shownText(message, isTerminal(OutputStream::standardError)) + "\n";
}

void printWarning(const std::string& message) { printError("warning: " + message); }

void printHint(const std::string& message) { printError("hint: " + message); }

std::string quoted(const std::string& name) { return '"' + name + '"'; }

} // namespace kestrine

#include "kestrinectl/Lines.h"

#include "kestrinectl/ShownText.h"
#include "platform/host/process/StandardStreams.h"

#include <filesystem>
#include <iostream>

namespace kestrine {

void printLine(std::string_view line) {
    std::cout << shownText(line, isTerminal(standardOutput)) << "\n" << std::flush;
}

void printMessage(std::string_view line) {
    std::cerr << "kestrinectl: " << shownText(line, isTerminal(standardError)) << "\n";
}

std::string shownPath(const std::string& path) {
    std::filesystem::path result;
    for (const std::filesystem::path& step : std::filesystem::path(path))
        if (step != "." && !step.empty())
            result /= step;
    if (result.empty())
        return path.empty() ? "" : ".";
    const bool needsDot = path.starts_with("./") && result.native().starts_with('-');
    return needsDot ? "./" + result.native() : result.native();
}

} // namespace kestrine

#include "kestrinectl/compare/CompareCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/DecoderIsolation.h"
#include "kestrinectl/GivenPaths.h"
#include "kestrinectl/compare/CompareOptions.h"
#include "kestrinectl/compare/ComparePage.h"
#include "kestrinectl/compare/PagePlace.h"
#include "kestrinectl/convert/ConvertLines.h"
#include "kestrinectl/convert/SeenPlaces.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "kestrinectl/text/ShownPath.h"
#include "kestrinectl/text/Words.h"
#include "platform/host/files/PathParts.h"

namespace kestrine {

namespace {

constexpr std::uint64_t maxPageBytes = 20'000'000;
constexpr std::uint32_t shortestLongestSide = 256;

struct CompareRequest {
    CompareOptions options;
    std::vector<std::string> files;
    PagePlace place;
};

[[noreturn]] void throwTooLarge() {
    throw CommandError("the page would be larger than " + shownBytes(maxPageBytes)
                       + "; compare fewer pictures or results");
}

/// Divides the space of a page among its pictures; what one leaves is for the next ones.
class PageSpace {
public:
    explicit PageSpace(std::size_t pictures) : left_(maxPageBytes - maxMarkupOfPage), pictures_(pictures) {}

    /// Shows the images as large as their share of the page allows. Throws CommandError if they do not fit
    /// in any size.
    void show(PageSection& section) {
        const std::uint64_t share = left_ / pictures_--;
        for (section.longestSide = usualLongestSide; section.longestSide >= shortestLongestSide;
             section.longestSide /= 2)
            if (const std::uint64_t used = shown(section); used <= share) {
                left_ -= used;
                return;
            }
        throwTooLarge();
    }

private:
    static std::uint64_t shown(PageSection& section) {
        std::uint64_t bytes = 0;
        section.shown.clear();
        const PageView view = viewOf(section.comparison, section.longestSide);
        for (const ComparedImage& image : section.comparison.images) {
            Result<ShownImage> made = shownImage(image, view);
            if (!made)
                throw CommandError(section.name + " cannot be shown: " + made.failure().text);
            bytes += made->bytesInPage() + maxMarkupPerImage;
            section.shown.push_back(*std::move(made));
        }
        return bytes;
    }

    std::uint64_t left_;
    std::size_t pictures_;
};

void printHintOfReduction(const PageSection& section) {
    if (section.longestSide < usualLongestSide)
        printHint(section.name + " is shown reduced to " + std::to_string(section.longestSide)
                  + " pixels, because a page has at most " + shownBytes(maxPageBytes)
                  + "; compare fewer pictures or results at once to see more");
}

/// A picture that is named several times is compared once.
std::vector<ConvertInput> inputsOf(const CompareRequest& request) {
    std::vector<ConvertInput> inputs;
    SeenPlaces seen;
    for (const std::string& word : request.files)
        if (const std::string file = typedWord(word); seen.add(file))
            inputs.push_back({.shown = shownPath(file), .path = absolutePath(file).native()});
    return inputs;
}

/// The sections of the pictures that gave results; the others have printed why.
struct Sections {
    std::vector<PageSection> shown;
    std::size_t results = 0; ///< on the page
    std::size_t failed = 0;  ///< pictures without all of their results
};

Sections sectionsFor(const std::vector<ConvertInput>& inputs, const ConversionRecipes& recipes) {
    PageSpace space(inputs.size());
    Sections sections;
    for (const ConvertInput& input : inputs) {
        PageSection section{.name = nameOf(input.path), .comparison = compared(input, recipes)};
        printMessages(section.comparison.conversion, ConvertDetail::lines);
        sections.failed += section.comparison.conversion.complaints.empty() ? 0 : 1;
        if (!section.comparison.hasResults())
            continue;
        space.show(section);
        printHintOfReduction(section);
        for (ComparedImage& image : section.comparison.images) {
            image.file = nullptr;
            sections.results += image.isReference ? 0 : 1;
        }
        sections.shown.push_back(std::move(section));
    }
    return sections;
}

void makePage(const CompareRequest& request) {
    const ConversionRecipes recipes = request.options.recipes(request.options.sets());
    const std::vector<ConvertInput> inputs = inputsOf(request);
    request.place.check(inputs);
    const DecoderIsolation isolation(IsolationChoice::automatic, 1);
    const Sections sections = sectionsFor(inputs, recipes);
    if (sections.shown.empty())
        throw CommandError("there is nothing to compare, so no page was written");
    const std::string page = comparePage(sections.shown);
    if (page.size() > maxPageBytes)
        throwTooLarge();
    request.place.writeAndOpen(page);
    printLine(shownPath(request.place.typedPath()) + " (" + counted(sections.results, "result") + " of "
              + counted(sections.shown.size(), "picture") + ")");
    if (sections.failed > 0)
        throw CommandError(counted(sections.failed, "picture") + " could not be compared completely");
}

} // namespace

void addCompareCommand(CLI::App& program) {
    CLI::App* command = program.add_subcommand(
        "compare", "Make a page that shows results beside each other and over the original");
    auto request = std::make_shared<CompareRequest>();
    request->options.addTo(*command);
    request->place.addTo(*command);
    command->add_option("FILE", request->files, "Pictures")->required();
    command->callback([request] { makePage(*request); });
}

void addPreviewCommand(CLI::App& program) {
    CLI::App* command = program.get_subcommand("sets")->add_subcommand(
        "preview", "Make a page that shows what a set makes of a picture");
    auto request = std::make_shared<CompareRequest>();
    request->options.setNames.resize(1);
    command
        ->add_option("NAME", request->options.setNames.front(),
                     "The name of a set, or its position such as @2")
        ->required();
    command->add_option("FILE", request->files, "Pictures")->required();
    request->place.addTo(*command);
    command->callback([request] { makePage(*request); });
}

} // namespace kestrine

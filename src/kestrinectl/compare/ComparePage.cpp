#include "kestrinectl/compare/ComparePage.h"

#include "kestrinectl/Version.h"
#include "kestrinectl/compare/Base64.h"
#include "kestrinectl/compare/PageParts.h"
#include "kestrinectl/text/HTMLText.h"
#include "kestrinectl/text/ShownNumbers.h"

#include <algorithm>
#include <cmath>

namespace kestrine {

namespace {

std::string pixelsText(std::uint32_t width, std::uint32_t height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

/// "1,234,567"
std::string grouped(std::uint64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t i = digits.size(); i > 3; i -= 3)
        digits.insert(i - 3, ",");
    return digits;
}

/// The number of bytes as HTML.
std::string bytesText(std::uint64_t bytes) {
    if (bytes < 1000)
        return shownBytes(bytes);
    return shownBytes(bytes) + " <span class=\"exact\">(" + grouped(bytes) + " bytes)</span>";
}

/// Rounded down, so that only equal pictures get 1.
std::string similarityText(const ComparedImage& image) {
    if (!image.similarity)
        return "not measured";
    if (*image.similarity >= 1)
        return "1";
    constexpr int steps = 10'000;
    const auto number = static_cast<int>(std::floor(*image.similarity * steps));
    const std::string digits = std::to_string(std::abs(number) % steps);
    return (number < 0 ? "-0." : "0.") + std::string(4 - digits.size(), '0') + digits;
}

/// The digest of an inline part, as a policy names it.
std::string policySource(const PagePart& part) {
    Bytes digest;
    for (std::size_t i = 0; i + 1 < part.digest.size(); i += 2)
        digest.push_back(
            static_cast<std::uint8_t>(std::stoi(std::string(part.digest.substr(i, 2)), nullptr, 16)));
    return "'sha256-" + base64(digest) + "'";
}

std::string headOf(const std::string& title) {
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; "
           "style-src "
           + policySource(pageStyle) + "; script-src " + policySource(pageScript)
           + "; base-uri 'none'; form-action 'none'\">\n"
             "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
             "<meta name=\"color-scheme\" content=\"light dark\">\n<title>"
           + title + "</title>\n<style>" + std::string(pageStyle.text) + "</style>\n</head>\n";
}

/// The name of the only file, or how many there are; as HTML.
std::string titleOf(const std::vector<PageSection>& sections) {
    return "Comparison of "
           + (sections.size() == 1 ? htmlText(sections.front().name) : counted(sections.size(), "picture"));
}

std::string row(const std::string& name, const std::string& pixels, const std::string& bytes,
                const std::string& share, const std::string& similarity) {
    std::string cells = "<tr><th scope=\"row\">" + name + "</th>";
    for (const std::string& text : {pixels, bytes, share, similarity})
        cells += "<td>" + text + "</td>";
    return cells + "</tr>\n";
}

std::string shareOf(std::uint64_t bytes, std::uint64_t whole) {
    return whole == 0 ? ""
                      : shownShort(100.0 * static_cast<double>(bytes) / static_cast<double>(whole)) + " %";
}

std::string table(const Comparison& comparison) {
    std::string html = "<div class=\"wide\"><table>\n<caption>Sizes and quality</caption>\n<thead><tr>"
                       "<th scope=\"col\">File</th><th scope=\"col\">Pixels</th><th scope=\"col\">Size</th>"
                       "<th scope=\"col\">Share</th><th scope=\"col\">SSIM</th></tr></thead>\n<tbody>\n";
    html += row("Original file (" + htmlText(comparison.format) + ")",
                pixelsText(comparison.width, comparison.height), bytesText(comparison.bytes), "100 %", "");
    for (const ComparedImage& image : comparison.images)
        if (!image.isReference)
            html += row(htmlText(image.label), pixelsText(image.width, image.height), bytesText(image.bytes),
                        shareOf(image.bytes, comparison.bytes), similarityText(image));
    return html + "</tbody>\n</table></div>\n";
}

std::string choice(const std::string& name, const std::string& legend, const std::vector<std::string>& labels,
                   std::size_t chosen) {
    std::string html = "<label>" + legend + " <select class=\"" + name + "\" autocomplete=\"off\">";
    for (std::size_t i = 0; i < labels.size(); ++i)
        html +=
            std::string(i == chosen ? "<option selected>" : "<option>") + htmlText(labels[i]) + "</option>";
    return html + "</select></label>\n";
}

std::string zoomChoice(std::size_t section) {
    struct Zoom {
        const char *value, *label;
    };
    std::string html = "<fieldset class=\"zoom\"><legend>Zoom</legend>";
    for (const auto& [value, label] : {Zoom{"fit", "fit"}, Zoom{"1", "1:1"}, Zoom{"2", "2:1"}})
        html += "<label><input type=\"radio\" name=\"zoom-" + std::to_string(section) + "\" value=\"" + value
                + "\" autocomplete=\"off\"" + (std::string(value) == "fit" ? " checked" : "") + "> " + label
                + "</label>";
    return html + "</fieldset>\n";
}

/// The script shows it, since it does nothing without one.
std::string viewer(const PageSection& section, std::size_t number) {
    std::vector<std::string> labels, parts;
    std::size_t result = 0;
    for (const ComparedImage& image : section.comparison.images) {
        if (!image.isReference && result == 0)
            result = labels.size();
        labels.push_back(image.label);
    }
    for (const PagePicture& part : section.shown.front().parts)
        parts.push_back(part.part);
    return "<div class=\"viewer\" hidden>\n<div class=\"controls\">\n" + choice("left", "Left", labels, 0)
           + choice("right", "Right", labels, result)
           + (parts.size() > 1 ? choice("part", "Part", parts, 0) : "") + zoomChoice(number)
           + "</div>\n<div class=\"stage\" role=\"group\" aria-label=\"Two pictures, one over the other\" "
             "tabindex=\"0\"><div class=\"frame\"><img class=\"right\" alt=\"\" draggable=\"false\"><img "
             "class=\"left\" alt=\"\" draggable=\"false\"><div class=\"line\"></div></div></div>\n"
             "<div class=\"slider\"><input type=\"range\" min=\"0\" max=\"100\" step=\"1\" value=\"50\" "
             "autocomplete=\"off\" aria-label=\"Where the left picture ends and the right one begins\">"
             "<span class=\"left\"></span><span class=\"right\"></span></div>\n</div>\n";
}

std::string captionOf(const ComparedImage& image, const ShownImage& shown) {
    std::string html = "<figcaption><strong>" + htmlText(image.label) + "</strong><span class=\"quiet\">";
    html += image.isReference ? "reference, without loss"
                              : shownBytes(image.bytes) + ", SSIM " + similarityText(image);
    if (shown.isConverted)
        html += "; shown as PNG made from the result, because browsers do not show "
                + std::string(image.format->title);
    return html + "</span></figcaption>\n";
}

std::string figure(const PageSection& section, std::size_t number) {
    const ComparedImage& image = section.comparison.images[number];
    const ShownImage& shown = section.shown[number];
    const std::string label = htmlText(image.label);
    std::string html = "<figure>\n" + captionOf(image, shown)
                       + "<div class=\"pane\" role=\"group\" aria-label=\"" + label + "\" tabindex=\"0\">";
    for (const PagePicture& part : shown.parts)
        html += "<img alt=\"" + htmlText(section.name) + ", " + label + ": " + part.part + "\" width=\""
                + std::to_string(part.width) + "\" height=\"" + std::to_string(part.height)
                + "\" src=\"data:" + std::string(part.mediaType) + ";base64," + base64(part.file) + "\">\n";
    return html + "</div>\n</figure>\n";
}

std::string noteOnReduction(const PageSection& section) {
    if (std::ranges::none_of(section.shown, &ShownImage::isReduced))
        return "";
    const std::string side = std::to_string(section.longestSide);
    return "<p class=\"quiet\">Pictures with a side of more than " + side
           + " pixels are too large for the page: the whole picture is shown reduced to " + side
           + " pixels and with a little loss. The other parts show the exact pixels. The table is about the "
             "complete files.</p>\n";
}

std::string sectionText(const PageSection& section, std::size_t number) {
    const std::string id = "picture-" + std::to_string(number);
    std::string html = "<section class=\"comparison\" aria-labelledby=\"" + id + "\">\n<h2 id=\"" + id + "\">"
                       + htmlText(section.name) + "</h2>\n" + table(section.comparison)
                       + noteOnReduction(section) + viewer(section, number) + "<div class=\"images\">\n";
    for (std::size_t i = 0; i < section.shown.size(); ++i)
        html += figure(section, i);
    return html + "</div>\n</section>\n";
}

} // namespace

std::string comparePage(const std::vector<PageSection>& sections) {
    std::string html =
        headOf(titleOf(sections))
        + "<body>\n<header>\n<h1>Comparison</h1>\n<p class=\"quiet\">SSIM is the mean structural similarity "
          "of a result to the "
          "original that was scaled in the same way without loss: 1 means equal, and the "
          "differences become visible as it gets smaller. Sizes are those of files without EXIF "
          "data.</p>\n</header>\n<main>\n";
    for (std::size_t i = 0; i < sections.size(); ++i)
        html += sectionText(sections[i], i + 1);
    return html + "</main>\n<footer><p class=\"quiet\">Made by kestrinectl " + programVersion()
           + ".</p></footer>\n<script>" + std::string(pageScript.text) + "</script>\n</body>\n</html>\n";
}

} // namespace kestrine

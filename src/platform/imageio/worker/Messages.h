// The messages between an engine and its worker: plain data, and its byte form.
#pragma once

#include "platform/imageio/Render.h"

#include <variant>

namespace kestrine::worker {

/// A picture of the source of a request, or of an empty canvas.
struct Recipe {
    std::optional<RowFormat> canvas; ///< only its sides are sent
    std::uint64_t frame = 0;
    std::vector<PictureStep> steps;

    bool operator==(const Recipe&) const = default;
};

/// An Output that owns its bytes.
struct OutputOrder {
    FileType type = FileType::jpeg;
    double quality = 0;
    bool isLossless = false;
    bool isProgressive = false;
    Effort effort = Effort::normal;
    bool ditherTransparency = false;
    Resolution resolution;
    std::optional<ColorModel> profileModel; ///< of `profile`; nullopt if there is none
    Bytes profile;
    Bytes exif;
    Bytes colorTable;
    bool keepsProfile = false;
    bool keepsExif = false; ///< of the source of the request
    ExifSelection exifSelection = ExifSelection::camera;
    std::uint64_t maxBytes = 0;

    bool operator==(const OutputOrder&) const = default;
};

// What can be ordered. Questions are known by their index in the table that both ends have.
struct OpenFile {
    std::optional<std::uint32_t> question; ///< to be answered with the description of the file
    bool operator==(const OpenFile&) const = default;
};
struct AnswerQuestion {
    std::uint32_t question = 0;
    bool operator==(const AnswerQuestion&) const = default;
};
struct ReadProperty {
    Recipe picture;
    PictureProperty property{};
    bool operator==(const ReadProperty&) const = default;
};
struct RenderFile {
    Recipe picture;
    OutputOrder output;
    bool operator==(const RenderFile&) const = default;
};
struct ReadPixels {
    Recipe picture;
    bool operator==(const ReadPixels&) const = default;
};
/// Nothing else will be ordered for the source.
struct ForgetSource {
    bool operator==(const ForgetSource&) const = default;
};
/// The question is answered although the file need not be a picture. The source is 0.
struct AskFile {
    std::uint32_t question = 0;
    bool operator==(const AskFile&) const = default;
};
using Order =
    std::variant<OpenFile, AnswerQuestion, ReadProperty, RenderFile, ReadPixels, ForgetSource, AskFile>;

/// Everything that the answer depends on, beside the file itself, which comes with every request.
struct Request {
    std::uint64_t source = 0; ///< a number that the engine gives to each source; 0 for AskFile
    std::uint64_t fileBytes = 0;
    std::uint64_t maximumPixels = defaultMaximumPixels;
    bool usesOneThread = false;
    bool keepsPixels = false;    ///< see Source::keepPixels()
    std::uint64_t keptBytes = 0; ///< memory that is reserved for kept pixels
    Order order;
    std::uint32_t codec = 0; ///< numberOf() the codec that opens the source; 0 for AskFile

    bool operator==(const Request&) const = default;
};

struct Response {
    std::vector<FrameDescription> frames; ///< for OpenFile, without profiles; empty if that failed
    std::optional<Failure> damage;
    /// What was ordered; for OpenFile the answer to its question. Empty if it was written into a file.
    Result<Bytes> content = Bytes();
};

/// The longest text of a failure; longer ones are cut off.
inline constexpr std::size_t maxFailureText = 500;
/// How many steps a picture may have. The tools use fewer than ten.
inline constexpr std::size_t maxSteps = 10'000;

Bytes bytesOf(const Request& request);
/// nullopt if `bytes` are not a request. A returned request is plausible, so that it can be carried out.
std::optional<Request> requestIn(ByteView bytes);

/// The content of a response is sent separately: `bytes` are the rest of it.
Bytes bytesOf(const Response& response);
/// nullopt if `bytes` are not a response. `content` is used unless the response is a failure. Texts contain
/// only printable characters, and each frame is within the limits.
std::optional<Response> responseIn(ByteView bytes, Bytes content);

} // namespace kestrine::worker

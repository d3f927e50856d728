#include "platform/imageio/worker/Messages.h"

#include "platform/host/process/MessageBytes.h"

#include <algorithm>
#include <cmath>

namespace kestrine::worker {

namespace {

constexpr std::uint64_t maxProfileBytes = std::uint64_t{16} << 20; // of ColorProfile
constexpr std::uint64_t maxExifBytes = std::uint64_t{16} << 20;
constexpr std::uint64_t maxColorTableBytes = 256 * 3;
/// No frame takes fewer bytes in a message.
constexpr std::size_t minFrameBytes = 16;

bool isWithin(double value, double low, double high) { return value >= low && value <= high; } // not NaN

// Parts of requests and responses.

void write(MessageWriter& writer, const RowFormat& format) {
    writer.add(format.width);
    writer.add(format.height);
    writer.add(format.model);
    writer.add(format.hasAlpha);
    writer.add(format.depth);
}

ColorModel colorModelIn(MessageReader& reader) {
    const auto model = reader.enumerator(ColorModel::rgb);
    reader.refuseUnless(model == ColorModel::gray || model == ColorModel::rgb);
    return model;
}

RowFormat formatIn(MessageReader& reader) {
    RowFormat format;
    format.width = reader.number<std::uint32_t>();
    format.height = reader.number<std::uint32_t>();
    format.model = colorModelIn(reader);
    format.hasAlpha = reader.flag();
    format.depth = reader.enumerator(SampleDepth::bits16);
    reader.refuseUnless(format.depth != SampleDepth{} && format.isWithinLimits());
    return format;
}

void write(MessageWriter& writer, const Resolution& resolution) {
    writer.add(resolution.horizontal);
    writer.add(resolution.vertical);
}

Resolution resolutionIn(MessageReader& reader) {
    const auto horizontal = reader.number<double>();
    return {horizontal, reader.number<double>()};
}

// Requests.

struct StepWriter {
    void operator()(QuarterTurn turn) const { writer.add(turn); }
    void operator()(const Resampling& resampling) const {
        for (const AxisMap& axis : {resampling.x, resampling.y}) {
            writer.add(axis.scale);
            writer.add(axis.offset);
            writer.add(axis.outSize);
        }
        writer.add(resampling.filter);
        writer.add(resampling.light);
    }
    void operator()(const Flatten& flatten) const { addColor(flatten.background); }
    void operator()(const Mirror&) const {}
    void operator()(const Pad& pad) const {
        for (const std::uint32_t margin : {pad.left, pad.top, pad.right, pad.bottom})
            writer.add(margin);
        addColor(pad.color);
    }
    void operator()(const IntoSRGB&) const {}
    void operator()(const Fade& fade) const { writer.add(fade.fraction); }
    void operator()(const IntoGenericRGBA&) const {}

    void addColor(const RGBColor& color) const {
        for (const std::uint8_t sample : {color.red, color.green, color.blue})
            writer.add(sample);
    }

    MessageWriter& writer;
};

RGBColor colorIn(MessageReader& reader) {
    const auto red = reader.number<std::uint8_t>(), green = reader.number<std::uint8_t>();
    return {red, green, reader.number<std::uint8_t>()};
}

Pad padIn(MessageReader& reader) {
    Pad pad;
    for (std::uint32_t* margin : {&pad.left, &pad.top, &pad.right, &pad.bottom}) {
        *margin = reader.number<std::uint32_t>();
        reader.refuseUnless(*margin <= maximumSide);
    }
    pad.color = colorIn(reader);
    return pad;
}

AxisMap axisIn(MessageReader& reader) {
    AxisMap axis;
    axis.scale = reader.number<double>();
    axis.offset = reader.number<double>();
    axis.outSize = reader.number<std::uint32_t>();
    reader.refuseUnless(isWithin(axis.scale, 1e-9, 1e9) && isWithin(axis.offset, -1e12, 1e12));
    return axis;
}

Resampling resamplingIn(MessageReader& reader) {
    Resampling resampling;
    resampling.x = axisIn(reader);
    resampling.y = axisIn(reader);
    resampling.filter = reader.enumerator(ResampleFilter::triangle);
    resampling.light = reader.enumerator(Light::stored);
    return resampling;
}

/// Reads a step. The cases have the order of the alternatives of PictureStep.
PictureStep stepIn(MessageReader& reader) {
    switch (reader.number<std::uint8_t>()) {
    case 0:
        return reader.enumerator(QuarterTurn::counterclockwise);
    case 1:
        return resamplingIn(reader);
    case 2:
        return Flatten{colorIn(reader)};
    case 3: {
        const auto fraction = reader.number<float>();
        reader.refuseUnless(isWithin(static_cast<double>(fraction), 0, 1));
        return Fade{fraction};
    }
    case 4:
        return IntoGenericRGBA{};
    case 5:
        return Mirror{};
    case 6:
        return padIn(reader);
    case 7:
        return IntoSRGB{};
    default:
        reader.refuseUnless(false);
        return Flatten{};
    }
}

void write(MessageWriter& writer, const Recipe& recipe) {
    writer.add(recipe.canvas.has_value());
    if (recipe.canvas)
        write(writer, *recipe.canvas);
    writer.add(recipe.frame);
    writer.add(std::uint64_t{recipe.steps.size()});
    for (const PictureStep& step : recipe.steps) {
        writer.add(static_cast<std::uint8_t>(step.index()));
        std::visit(StepWriter{writer}, step);
    }
}

Recipe recipeIn(MessageReader& reader) {
    Recipe recipe;
    if (reader.flag())
        recipe.canvas = formatIn(reader);
    recipe.frame = reader.number<std::uint64_t>();
    const std::uint64_t count = reader.count(1);
    reader.refuseUnless(count <= maxSteps);
    for (std::uint64_t i = 0; i < count && reader.ok(); ++i)
        recipe.steps.push_back(stepIn(reader));
    return recipe;
}

void write(MessageWriter& writer, const OutputOrder& output) {
    writer.add(output.type);
    writer.add(output.quality);
    writer.add(output.ditherTransparency);
    write(writer, output.resolution);
    writer.add(output.profileModel.has_value());
    if (output.profileModel)
        writer.add(*output.profileModel);
    for (const Bytes& bytes :
         {std::cref(output.profile), std::cref(output.exif), std::cref(output.colorTable)})
        writer.add(ByteView(bytes));
    writer.add(output.keepsProfile);
    writer.add(output.keepsExif);
    writer.add(output.exifSelection);
    writer.add(output.maxBytes);
    writer.add(output.isLossless);
    writer.add(output.isProgressive);
    writer.add(output.effort);
}

OutputOrder outputIn(MessageReader& reader) {
    OutputOrder output;
    output.type = reader.enumerator(lastFileType);
    output.quality = reader.number<double>();
    output.ditherTransparency = reader.flag();
    output.resolution = resolutionIn(reader);
    if (reader.flag())
        output.profileModel = colorModelIn(reader);
    output.profile = copied(reader.bytes(maxProfileBytes));
    output.exif = copied(reader.bytes(maxExifBytes));
    output.colorTable = copied(reader.bytes(maxColorTableBytes));
    output.keepsProfile = reader.flag();
    output.keepsExif = reader.flag();
    output.exifSelection = reader.enumerator(ExifSelection::all);
    output.maxBytes = reader.number<std::uint64_t>();
    output.isLossless = reader.flag();
    output.isProgressive = reader.flag();
    output.effort = reader.enumerator(Effort::max);
    return output;
}

struct OrderWriter {
    void operator()(const OpenFile& order) const {
        writer.add(order.question.has_value());
        writer.add(order.question.value_or(0));
    }
    void operator()(const AnswerQuestion& order) const { writer.add(order.question); }
    void operator()(const ReadProperty& order) const {
        write(writer, order.picture);
        writer.add(order.property);
    }
    void operator()(const RenderFile& order) const {
        write(writer, order.picture);
        write(writer, order.output);
    }
    void operator()(const ReadPixels& order) const { write(writer, order.picture); }
    void operator()(const ForgetSource&) const {}
    void operator()(const AskFile& order) const { writer.add(order.question); }

    MessageWriter& writer;
};

OpenFile openFileIn(MessageReader& reader) {
    const bool asks = reader.flag();
    const auto question = reader.number<std::uint32_t>();
    reader.refuseUnless(asks || question == 0);
    return {asks ? std::optional(question) : std::nullopt};
}

ReadProperty readPropertyIn(MessageReader& reader) {
    Recipe picture = recipeIn(reader);
    return {std::move(picture), reader.enumerator(PictureProperty::profileName)};
}

RenderFile renderFileIn(MessageReader& reader) {
    Recipe picture = recipeIn(reader);
    return {std::move(picture), outputIn(reader)};
}

/// Reads an order. The cases have the order of the alternatives of Order.
Order orderIn(MessageReader& reader) {
    switch (reader.number<std::uint8_t>()) {
    case 0:
        return openFileIn(reader);
    case 1:
        return AnswerQuestion{reader.number<std::uint32_t>()};
    case 2:
        return readPropertyIn(reader);
    case 3:
        return renderFileIn(reader);
    case 4:
        return ReadPixels{recipeIn(reader)};
    case 5:
        return ForgetSource{};
    case 6:
        return AskFile{reader.number<std::uint32_t>()};
    default:
        reader.refuseUnless(false);
        return ForgetSource{};
    }
}

// Responses.

void write(MessageWriter& writer, const Failure& failure) {
    writer.add(failure.reason);
    writer.add(failure.text.substr(0, maxFailureText));
}

Failure failureIn(MessageReader& reader) {
    const auto reason = reader.enumerator(Reason::otherFormat);
    reader.refuseUnless(reason != Reason{});
    std::string text = reader.text(maxFailureText);
    std::ranges::replace_if(
        text, [](unsigned char c) { return c < ' ' || c == 0x7f; }, '?');
    return {reason, std::move(text)};
}

void write(MessageWriter& writer, const FrameDescription& frame) {
    write(writer, frame.format);
    write(writer, frame.resolution);
    writer.add(static_cast<std::uint8_t>(frame.quarterTurns));
    writer.add(static_cast<std::uint8_t>(frame.maxHalvings));
    writer.add(static_cast<std::uint8_t>(frame.orientation));
    writer.add(frame.isUncompressed);
    writer.add(std::uint32_t{frame.storedBitsPerPixel});
    writer.add(frame.heldBytes);
    writer.add(frame.isDrawn);
}

FrameDescription frameIn(MessageReader& reader) {
    FrameDescription frame;
    frame.format = formatIn(reader);
    frame.resolution = resolutionIn(reader);
    // The resolutions that plausibleResolution() gives.
    reader.refuseUnless(isWithin(frame.resolution.horizontal, 1, 100'000)
                        && isWithin(frame.resolution.vertical, 1, 100'000));
    frame.quarterTurns = reader.number<std::uint8_t>();
    frame.maxHalvings = reader.number<std::uint8_t>();
    reader.refuseUnless(frame.quarterTurns < 4 && frame.maxHalvings <= 32);
    frame.orientation = reader.number<std::uint8_t>();
    reader.refuseUnless(frame.orientation >= 1 && frame.orientation <= 8);
    frame.isUncompressed = reader.flag();
    frame.storedBitsPerPixel = reader.number<std::uint32_t>();
    frame.heldBytes = reader.number<std::uint64_t>();
    frame.isDrawn = reader.flag();
    return frame;
}

} // namespace

Bytes bytesOf(const Request& request) {
    MessageWriter writer;
    writer.add(request.source);
    writer.add(request.fileBytes);
    writer.add(request.maximumPixels);
    writer.add(request.usesOneThread);
    writer.add(request.keepsPixels);
    writer.add(request.keptBytes);
    writer.add(static_cast<std::uint8_t>(request.order.index()));
    std::visit(OrderWriter{writer}, request.order);
    writer.add(request.codec);
    return std::move(writer).take();
}

std::optional<Request> requestIn(ByteView bytes) {
    MessageReader reader(bytes);
    Request request;
    request.source = reader.number<std::uint64_t>();
    request.fileBytes = reader.number<std::uint64_t>();
    request.maximumPixels = reader.number<std::uint64_t>();
    request.usesOneThread = reader.flag();
    request.keepsPixels = reader.flag();
    request.keptBytes = reader.number<std::uint64_t>();
    request.order = orderIn(reader);
    request.codec = reader.number<std::uint32_t>();
    reader.refuseUnless(codecNumbered(request.codec) != nullptr);
    return reader.isComplete() ? std::optional(std::move(request)) : std::nullopt;
}

Bytes bytesOf(const Response& response) {
    MessageWriter writer;
    writer.add(std::uint64_t{response.frames.size()});
    for (const FrameDescription& frame : response.frames)
        write(writer, frame);
    writer.add(response.damage.has_value());
    if (response.damage)
        write(writer, *response.damage);
    writer.add(response.content.ok());
    if (!response.content)
        write(writer, response.content.failure());
    return std::move(writer).take();
}

std::optional<Response> responseIn(ByteView bytes, Bytes content) {
    MessageReader reader(bytes);
    Response response;
    const std::uint64_t count = reader.count(minFrameBytes);
    for (std::uint64_t i = 0; i < count && reader.ok(); ++i)
        response.frames.push_back(frameIn(reader));
    if (reader.flag())
        response.damage = failureIn(reader);
    if (reader.flag())
        response.content = std::move(content);
    else
        response.content = failureIn(reader);
    return reader.isComplete() ? std::optional(std::move(response)) : std::nullopt;
}

} // namespace kestrine::worker

#include "platform/imageio/worker/Service.h"

#include "platform/coregraphics/RowsAhead.h"
#include "platform/host/process/MemoryBudget.h"
#include "platform/imageio/worker/Parcel.h"

#include <limits>
#include <new>

namespace kestrine::worker {

namespace {

/// Requests come from our own program, so their length is not limited further.
constexpr std::uint64_t maxRequestContent = 0;

/// Receives a request, carries it out and answers. False at the end of the connection, and for a message that
/// is not a parcel.
bool serveOneRequest(Service& service, const MessageSocket& socket) {
    Result<std::optional<Message>> message = socket.receive(true);
    if (!message || !*message)
        return false;
    std::vector<FileDescriptor>& files = (*message)->files;
    if (files.size() != 2 && files.size() != 3)
        return false;
    const MemoryFile shared(std::move(files[1]));
    FileDescriptor resultFile = files.size() == 3 ? std::move(files[2]) : FileDescriptor();
    const Result<Parcel> parcel = unpacked((*message)->bytes, shared, maxRequestContent);
    if (!parcel)
        return false;
    Response response;
    const std::optional<Request> request = requestIn(parcel->head);
    const bool isOneOfMany = request && request->usesOneThread;
    if (request)
        response = service.responseTo(*request, std::move(files[0]), std::move(resultFile));
    else
        response.content = Failure{Reason::refused, "the request is not valid"};
    Bytes head = bytesOf(response);
    Bytes content = response.content ? *std::move(response.content) : Bytes();
    const Result<Bytes> answer = packed({std::move(head), std::move(content)}, shared);
    if (!answer || !socket.send(*answer))
        return false;
    if (!response.frames.empty() && !isOneOfMany) // an opened file is usually rendered at once
        (void)socket.isMessageSoon();
    return true;
}

} // namespace

void Service::serve(const MessageSocket& requests) {
    // The engine reserves memory for all of its workers together, before it sends a request.
    budgetForHeldPictures().setLimit(std::numeric_limits<std::uint64_t>::max());
    while (serveOneRequest(*this, requests)) {
    }
}

Response Service::responseTo(const Request& request, FileDescriptor file, FileDescriptor resultFile) {
    std::optional<OneThreadScope> oneThread;
    if (request.usesOneThread)
        oneThread.emplace();
    setMaximumPixels(request.maximumPixels);
    Response response;
    Call call{request, std::move(file), std::move(resultFile), response};
    try {
        response.content =
            std::visit([&](const auto& order) { return carryOut(order, call); }, request.order);
    } catch (const std::bad_alloc&) {
        response.content = Failure{Reason::outOfMemory, "not enough memory"};
    }
    if (source_ != nullptr && sourceNumber_ == request.source)
        response.damage = source_->damage();
    return response;
}

Result<void> Service::open(Call& call) {
    const Request& request = call.request;
    if (sourceNumber_ != request.source) {
        sourceNumber_ = 0;
        source_.reset();
        source_ = TRY(LocalSource::open(readerOfFile(std::move(call.file), request.fileBytes),
                                        *codecNumbered(request.codec)));
        sourceNumber_ = request.source;
    }
    budgetForKeptPictures().setLimit(request.keptBytes);
    if (request.keepsPixels)
        source_->keepPixels();
    return {};
}

Result<FileQuestion> Service::questionNumbered(std::uint32_t number) const {
    if (number >= questions_.size())
        return Failure{Reason::refused, "the question is not known"};
    return questions_[number];
}

Result<Picture> Service::pictureOf(const Recipe& recipe) const {
    Picture picture{source_, static_cast<std::size_t>(recipe.frame), recipe.steps};
    if (recipe.canvas)
        picture.source = Source::clear(recipe.canvas->width, recipe.canvas->height);
    if (recipe.frame >= picture.source->frames().size())
        return Failure{Reason::refused, "the file has no such picture"};
    return picture;
}

Result<Bytes> Service::carryOut(const OpenFile& order, Call& call) {
    TRY(open(call));
    call.response.frames = source_->frames();
    return order.question ? carryOut(AnswerQuestion{*order.question}, call) : Bytes();
}

Result<Bytes> Service::carryOut(const AnswerQuestion& order, Call& call) {
    TRY(open(call));
    const FileQuestion question = TRY(questionNumbered(order.question));
    return source_->answer(question);
}

Result<Bytes> Service::carryOut(const ReadProperty& order, Call& call) {
    TRY(open(call));
    const Picture picture = TRY(pictureOf(order.picture));
    return source_->property(picture, order.property);
}

Result<Bytes> Service::carryOut(const RenderFile& order, Call& call) {
    TRY(open(call));
    const Picture picture = TRY(pictureOf(order.picture));
    const OutputOrder& ordered = order.output;
    const std::optional<ColorProfile> profile =
        ordered.profileModel ? ColorProfile::fromICC(ordered.profile, *ordered.profileModel) : std::nullopt;
    const EncodingOptions options{.quality = ordered.quality,
                                  .isLossless = ordered.isLossless,
                                  .isProgressive = ordered.isProgressive,
                                  .effort = ordered.effort,
                                  .ditherTransparency = ordered.ditherTransparency,
                                  .resolution = ordered.resolution,
                                  .profile = profile ? &*profile : nullptr,
                                  .exif = ordered.exif,
                                  .colorTable = ordered.colorTable};
    const KeptProperties kept{ordered.keepsProfile, ordered.keepsExif ? source_ : nullptr,
                              ordered.exifSelection};
    const Output output{ordered.type, options, kept, ordered.maxBytes};
    if (!call.resultFile.isOpen())
        return source_->rendered(picture, output);
    TRY(source_->renderInto(call.resultFile.number(), picture, output));
    return Bytes();
}

Result<Bytes> Service::carryOut(const ReadPixels& order, Call& call) {
    TRY(open(call));
    const Picture picture = TRY(pictureOf(order.picture));
    PixelBuffer pixels = TRY(source_->pixels(picture));
    return std::move(pixels.bytes);
}

Result<Bytes> Service::carryOut(const ForgetSource&, Call& call) {
    if (sourceNumber_ == call.request.source) {
        sourceNumber_ = 0;
        source_.reset();
    }
    return Bytes();
}

Result<Bytes> Service::carryOut(const AskFile& order, Call& call) {
    const FileQuestion question = TRY(questionNumbered(order.question));
    return question(readerOfFile(std::move(call.file), call.request.fileBytes));
}

} // namespace kestrine::worker

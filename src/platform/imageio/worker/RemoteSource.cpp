#include "platform/imageio/worker/RemoteSource.h"

#include "platform/coregraphics/RowsAhead.h"
#include "platform/imageio/LocalSource.h"
#include "platform/imageio/PictureEngine.h"
#include "platform/imageio/Plausibility.h"

#include <algorithm>

namespace kestrine::worker {

namespace {

/// Above every profile, EXIF block and answer to a question.
constexpr std::uint64_t maxPropertyBytes = std::uint64_t{64} << 20;

/// The limits for an answer with so many pixels. A worker is hostile or broken if it needs more. The
/// costliest files of `scripts/check bombs` take 0.02 microseconds for a pixel. Without pixels an answer
/// comes quickly; that matters only while cores are idle.
AnswerLimits limitsFor(std::uint64_t pixels, std::uint64_t fileBytes) {
    using std::chrono::milliseconds;
    constexpr milliseconds always = std::chrono::minutes{1}, withoutProgress = std::chrono::minutes{5};
    const auto microseconds = 5 * pixels + fileBytes;
    const bool isQuick = pixels == 0 && !OneThreadScope::exists();
    return {always + milliseconds{microseconds / 1000}, withoutProgress, isQuick};
}

std::uint64_t nextNumber() {
    static std::atomic<std::uint64_t> last = 0;
    return ++last;
}

Recipe recipeOf(const Picture& picture) {
    Recipe recipe{std::nullopt, picture.frame, picture.steps};
    if (picture.source->isCanvas())
        recipe.canvas = picture.description().format;
    return recipe;
}

OutputOrder orderOf(const Output& output) {
    OutputOrder order{.type = output.type,
                      .quality = output.options.quality,
                      .isLossless = output.options.isLossless,
                      .isProgressive = output.options.isProgressive,
                      .effort = output.options.effort,
                      .ditherTransparency = output.options.ditherTransparency,
                      .resolution = output.options.resolution,
                      .exif = copied(output.options.exif),
                      .colorTable = copied(output.options.colorTable),
                      .keepsProfile = output.kept.profile,
                      .keepsExif = output.kept.exif != nullptr,
                      .exifSelection = output.kept.exifSelection,
                      .maxBytes = output.maxBytes};
    if (const ColorProfile* profile = output.options.profile; profile != nullptr) {
        order.profileModel = profile->model();
        order.profile = copied(profile->bytes());
    }
    return order;
}

/// The position of a question in the engine's table.
std::optional<std::uint32_t> numberOf(FileQuestion question, const EngineParts& engine) {
    const auto found = std::ranges::find(engine.questions, question);
    return found == engine.questions.end()
               ? std::nullopt
               : std::optional(static_cast<std::uint32_t>(found - engine.questions.begin()));
}

Failure unknownQuestion() { return {Reason::refused, "the question is not known to the worker"}; }

bool isOtherFormat(const Delivery& opened) {
    return opened.response && !opened.response->content
           && opened.response->content.failure().reason == Reason::otherFormat;
}

/// The picture, decoded by another source of the same file.
Picture withSource(const Picture& picture, const std::shared_ptr<Source>& source) {
    Picture result = picture;
    if (!picture.source->isCanvas())
        result.source = source;
    return result;
}

} // namespace

Result<SentFile> SentFile::of(std::shared_ptr<const ByteReader> file) {
    SentFile sent(std::move(file));
    if (sent.reader_->descriptor() >= 0)
        return sent;
    const Bytes bytes = TRY(sent.reader_->readAll(sent.size()));
    MemoryFile copy = TRY(MemoryFile::create());
    TRY(copy.write(bytes, 0));
    sent.copy_ = std::move(copy);
    return sent;
}

Result<Bytes> answerOfWorker(EngineParts& engine, std::shared_ptr<const ByteReader> file,
                             FileQuestion question) {
    const std::optional<std::uint32_t> number = numberOf(question, engine);
    if (!number)
        return unknownQuestion();
    const SentFile sent = TRY(SentFile::of(std::move(file)));
    const Request request{.fileBytes = sent.size(), .order = AskFile{*number}};
    Delivery delivery = engine.pool.exchange(
        {request, 0, sent.descriptor(), -1, maxPropertyBytes, limitsFor(0, sent.size())});
    if (!delivery.isDelivered && engine.mayDecodeHere)
        return question(sent.reader());
    Response response = TRY(std::move(delivery.response));
    return std::move(response.content);
}

RemoteSource::RemoteSource(std::shared_ptr<EngineParts> engine, SentFile file, const ImageCodec& codec)
    : engine_(std::move(engine)), number_(nextNumber()), file_(std::move(file)) {
    codec_ = &codec;
}

RemoteSource::~RemoteSource() { engine_->pool.forget(number_, keptBytes_ > 0); }

Result<std::shared_ptr<Source>> RemoteSource::open(std::shared_ptr<EngineParts> engine,
                                                   std::shared_ptr<const ByteReader> file,
                                                   const ImageCodec& codec, FileQuestion question) {
    SentFile sent = TRY(SentFile::of(std::move(file)));
    const OpenFile order{numberOf(question, *engine)};
    const std::shared_ptr<RemoteSource> source(new RemoteSource(std::move(engine), std::move(sent), codec));
    Delivery opened = source->deliver(order, {0, maxPropertyBytes});
    while (isOtherFormat(opened) && source->codec_->other != nullptr) {
        source->codec_ = source->codec_->other;
        opened = source->deliver(order, {0, maxPropertyBytes});
    }
    if (!opened.isDelivered && source->engine_->mayDecodeHere)
        return source->openHere();
    Response response = TRY(std::move(opened.response));
    if (response.frames.empty())
        return response.content ? decoderCrash() : response.content.failure();
    source->frames_ = std::move(response.frames);
    source->kept_.resize(source->frames_.size());
    if (question != nullptr && response.content)
        source->knownAnswer_.emplace(question, *std::move(response.content));
    return std::shared_ptr<Source>(source);
}

Result<std::shared_ptr<Source>> RemoteSource::openHere() const {
    const std::lock_guard lock(mutex_);
    if (here_ == nullptr)
        here_ = TRY(LocalSource::open(file_.reader()));
    if (keepsPixels_)
        here_->keepPixels();
    return here_;
}

RemoteSource::Price RemoteSource::priceOf(const Picture& picture) const {
    constexpr std::uint64_t mostBytesPerPixel = 9; // uncompressed with 16 bits and alpha, and what frames it
    const std::uint64_t result = picture.format().pixels();
    return {picture.description().format.pixels() + result, mostBytesPerPixel * result + maxPropertyBytes};
}

Delivery RemoteSource::deliver(Order order, const Price& price) const {
    Request request{.source = number_,
                    .fileBytes = file_.size(),
                    .maximumPixels = maximumPixels(),
                    .usesOneThread = OneThreadScope::exists(),
                    .keepsPixels = keepsPixels_,
                    .order = std::move(order),
                    .codec = numberOf(*codec_)};
    {
        const std::lock_guard lock(mutex_);
        request.keptBytes = keptBytes_;
    }
    Delivery delivery =
        engine_->pool.exchange({request, librariesOf(*codec_) | price.libraries, file_.descriptor(),
                                price.resultFile, price.maxContent, limitsFor(price.pixels, file_.size())});
    if (delivery.response && delivery.response->damage)
        damage_.note(*delivery.response->damage);
    return delivery;
}

template <class Here>
Result<Bytes> RemoteSource::carriedOut(Order order, const Price& price, const Here& here) const {
    Delivery delivery = deliver(std::move(order), price);
    if (delivery.isDelivered || !engine_->mayDecodeHere) {
        Response response = TRY(std::move(delivery.response));
        return std::move(response.content);
    }
    const std::shared_ptr<Source> source = TRY(openHere());
    Result<Bytes> result = here(source);
    if (const std::optional<Failure> damage = source->damage())
        damage_.note(*damage);
    return result;
}

Result<Bytes> RemoteSource::property(const Picture& picture, PictureProperty property) const {
    return carriedOut(ReadProperty{recipeOf(picture), property}, {0, maxPropertyBytes},
                      [&](const std::shared_ptr<Source>& source) {
                          return source->property(withSource(picture, source), property);
                      });
}

Result<Bytes> RemoteSource::answer(FileQuestion question) const {
    if (knownAnswer_ && knownAnswer_->first == question)
        return knownAnswer_->second;
    const std::optional<std::uint32_t> number = numberOf(question, *engine_);
    if (!number)
        return unknownQuestion();
    return carriedOut(AnswerQuestion{*number}, {0, maxPropertyBytes},
                      [&](const std::shared_ptr<Source>& source) { return source->answer(question); });
}

void RemoteSource::reserveToKeep(std::size_t frame) {
    const RowFormat& format = frames()[frame].format;
    const std::lock_guard lock(mutex_);
    if (!keepsPixels_ || kept_[frame] || frames()[frame].isDrawn || !format.canBeBuffered()
        || !isWorthKeeping(format, file_.size()))
        return;
    kept_[frame] = budgetForKeptPictures().tryReserve(format.bytes());
    if (kept_[frame])
        keptBytes_ += format.bytes();
}

template <class Here>
Result<Bytes> RemoteSource::orderResult(const Picture& picture, const Output& output, int file,
                                        const Here& here) {
    if (!picture.source->isCanvas())
        reserveToKeep(picture.frame);
    const MemoryReservation held =
        TRY(budgetForHeldPictures().reserve(bytesToEncode(picture, output, false)));
    Price price = priceOf(picture);
    price.libraries = librariesOf(outputFormat(output.type));
    price.resultFile = file;
    return carriedOut(RenderFile{recipeOf(picture), orderOf(output)}, price,
                      [&](const std::shared_ptr<Source>& source) {
                          Output ofSource = output;
                          if (ofSource.kept.exif != nullptr)
                              ofSource.kept.exif = source;
                          return here(*source, withSource(picture, source), ofSource);
                      });
}

Result<Bytes> RemoteSource::rendered(const Picture& picture, const Output& output) {
    Bytes result =
        TRY(orderResult(picture, output, -1, [](Source& source, const Picture& own, const Output& ownOutput) {
            return source.rendered(own, ownOutput);
        }));
    if (result.empty()) // a picture file is never empty
        return decoderCrash();
    return result;
}

Result<void> RemoteSource::renderInto(int file, const Picture& picture, const Output& output) {
    const auto here = [file](Source& source, const Picture& own, const Output& ownOutput) -> Result<Bytes> {
        TRY(source.renderInto(file, own, ownOutput));
        return Bytes();
    };
    TRY(orderResult(picture, output, file, here));
    return {};
}

Result<PixelBuffer> RemoteSource::pixels(const Picture& picture) {
    reserveToKeep(picture.frame);
    const MemoryReservation held = TRY(budgetForHeldPictures().reserve(bytesToHold(picture, true, false)));
    const auto readHere = [&](const std::shared_ptr<Source>& source) -> Result<Bytes> {
        Result<PixelBuffer> own = source->pixels(withSource(picture, source));
        return own ? Result<Bytes>(std::move(own->bytes)) : own.failure();
    };
    PixelBuffer buffer;
    buffer.format = picture.format();
    buffer.bytes = TRY(carriedOut(ReadPixels{recipeOf(picture)}, priceOf(picture), readHere));
    if (buffer.bytes.size() != buffer.format.bytes())
        return decoderCrash();
    return buffer;
}

} // namespace kestrine::worker

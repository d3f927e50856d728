#include "platform/imageio/PictureEngine.h"

#include "platform/imageio/LocalSource.h"

namespace kestrine {

namespace {

class LocalEngine final : public PictureEngine {
public:
    Result<std::shared_ptr<Source>> open(std::shared_ptr<const ByteReader> file, FileQuestion) override {
        return std::shared_ptr<Source>(TRY(LocalSource::open(std::move(file))));
    }

    Result<Bytes> answer(std::shared_ptr<const ByteReader> file, FileQuestion question) override {
        return question(file);
    }
};

constinit LocalEngine inThisProcess;
constinit PictureEngine* chosen = nullptr;

} // namespace

PictureEngine& PictureEngine::current() { return chosen == nullptr ? inThisProcess : *chosen; }

void PictureEngine::setCurrent(PictureEngine* engine) { chosen = engine; }

Failure decoderCrash() { return {Reason::crashed, "the decoder crashed"}; }

Result<std::shared_ptr<Source>> openPicture(const std::string& path, FileQuestion question) {
    std::shared_ptr<const ByteReader> file = TRY(readerOfPath(path));
    return PictureEngine::current().open(std::move(file), question);
}

} // namespace kestrine

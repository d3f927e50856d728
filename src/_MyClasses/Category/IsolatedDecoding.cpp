#include "_MyClasses/Category/IsolatedDecoding.h"

#include "_MyClasses/Class/ExifTag/ExifQuestions.h"

namespace kestrine {

IsolatedDecoding::IsolatedDecoding(Isolation isolation, unsigned usualWorkers)
    : nursery_(usualWorkers > 1 ? std::optional<WorkerNursery>(std::in_place, pictureWorker(exifQuestions))
                                : std::nullopt),
      engine_(exifQuestions, isolation, usualWorkers) {
    PictureEngine::setCurrent(&engine_);
}

IsolatedDecoding::IsolatedDecoding(Isolation isolation, unsigned usualWorkers, const std::string& helper)
    : nursery_(std::in_place, helper), engine_(exifQuestions, isolation, usualWorkers) {
    PictureEngine::setCurrent(&engine_);
}

IsolatedDecoding::~IsolatedDecoding() { PictureEngine::setCurrent(nullptr); }

Result<SandboxLayers> IsolatedDecoding::layers() {
    const std::unique_ptr<WorkerProcess> worker = TRY(WorkerProcess::start(pictureWorker(exifQuestions), 0));
    return worker->layers();
}

} // namespace kestrine

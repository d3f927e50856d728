#include "_MyClasses/Category/IsolatedDecoding.h"

#include "_MyClasses/Class/ExifTag/ExifQuestions.h"

namespace kestrine {

IsolatedDecoding::IsolatedDecoding(Isolation isolation, unsigned usualWorkers)
    : nursery_(pictureWorker(exifQuestions)), engine_(exifQuestions, isolation, usualWorkers) {
    PictureEngine::setCurrent(&engine_);
}

IsolatedDecoding::IsolatedDecoding(Isolation isolation, unsigned usualWorkers, const std::string& helper)
    : nursery_(helper), engine_(exifQuestions, isolation, usualWorkers) {
    PictureEngine::setCurrent(&engine_);
}

IsolatedDecoding::~IsolatedDecoding() { PictureEngine::setCurrent(nullptr); }

Result<SandboxLayers> IsolatedDecoding::layers() {
    const std::unique_ptr<WorkerProcess> worker = TRY(WorkerProcess::start(pictureWorker(exifQuestions), 0));
    return worker->layers();
}

} // namespace kestrine

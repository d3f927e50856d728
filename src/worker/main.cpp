// kestrine-worker: decodes pictures for a program that uses the library. It is started by IsolatedDecoding,
// never by the user.

#include "_MyClasses/Class/ExifTag/ExifQuestions.h"
#include "platform/host/process/WorkerNursery.h"
#include "platform/imageio/worker/WorkerEngine.h"

int main() { kestrine::runAsNursery(kestrine::pictureWorker(kestrine::exifQuestions)); }

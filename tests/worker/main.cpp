// The helper program of the tests of host: kestrine-worker, with the worker of WorkerTesting.h.
#include "tests/platform/host/process/WorkerTesting.h"

int main() { kestrine::runAsNursery(kestrine::testing::workerProgram()); }

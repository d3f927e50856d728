#include "platform/carbon/Gestalt.h"

#include <atomic>

namespace kestrine {
namespace {

// 10.5.8: the newest system on which both labels and Spotlight's comments work as people expect.
std::atomic<std::int32_t> systemVersion = 0x1058;

} // namespace

OSErr Gestalt(OSType selector, std::int32_t* response) {
    if (response == nullptr)
        return paramErr;
    if (selector != gestaltSystemVersion)
        return gestaltUndefSelectorErr;
    *response = systemVersion;
    return noErr;
}

void setSystemVersion(std::int32_t version) { systemVersion = version; }

} // namespace kestrine

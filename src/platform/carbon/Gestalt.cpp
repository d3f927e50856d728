#include "platform/carbon/Gestalt.h"

#include "platform/carbon/SystemVersion.h"

#include <atomic>

namespace kestrine {
namespace {

// 10.5.8: the newest version with which both labels (before 10.6) and Spotlight comments (from 10.5 on) work.
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

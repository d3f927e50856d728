// Sets another system version for the lifetime of the object.
#pragma once

#include "platform/carbon/Gestalt.h"
#include "platform/carbon/SystemVersion.h"

namespace kestrine::testing {

class SystemVersion {
public:
    explicit SystemVersion(std::int32_t version) {
        (void)Gestalt(gestaltSystemVersion, &before_);
        setSystemVersion(version);
    }
    ~SystemVersion() { setSystemVersion(before_); }
    SystemVersion(const SystemVersion&) = delete;
    SystemVersion& operator=(const SystemVersion&) = delete;

private:
    std::int32_t before_ = 0;
};

} // namespace kestrine::testing

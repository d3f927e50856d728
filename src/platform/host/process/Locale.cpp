#include "platform/host/process/Locale.h"

#include "platform/host/process/Environment.h"

#include <langinfo.h>
#include <locale.h>
#include <string_view>

namespace kestrine {

namespace {

/// Part of the C library itself, so always available.
constexpr const char* utf8Locale = "C.UTF-8";

} // namespace

EnvironmentChanges changesForUTF8() {
    const locale_t locale = ::newlocale(LC_ALL_MASK, "", nullptr); // null when one is not installed
    const bool isUTF8 = locale != nullptr && ::nl_langinfo_l(CODESET, locale) == std::string_view("UTF-8");
    if (locale != nullptr)
        ::freelocale(locale);
    if (isUTF8)
        return {};
    const bool isAllNamed = !Environment::ofProcess().variable("LC_ALL").value_or("").empty();
    return {{locale == nullptr || isAllNamed ? "LC_ALL" : "LC_CTYPE", utf8Locale}};
}

} // namespace kestrine

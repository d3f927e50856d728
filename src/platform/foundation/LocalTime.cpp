#include "platform/foundation/LocalTime.h"

#include <array>
#include <cstdio>
#include <ctime>

namespace kestrine {

namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year_month_day;

/// A 0 matches any digit.
constexpr std::array<std::u16string_view, 2> forms{u"0000-00-00 00:00:00", u"0000:00:00 00:00:00"};

bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

bool hasForm(std::u16string_view text, std::u16string_view form) {
    if (text.size() != form.size())
        return false;
    for (std::size_t i = 0; i < form.size(); ++i)
        if (form[i] == u'0' ? !isDigit(text[i]) : text[i] != form[i])
            return false;
    return true;
}

unsigned numberIn(std::u16string_view digits) {
    unsigned number = 0;
    for (const char16_t digit : digits)
        number = number * 10 + (digit - u'0');
    return number;
}

/// The offset of local time from UTC at `date`.
seconds localOffset(sys_seconds date) {
    ::tzset();
    const std::time_t time = date.time_since_epoch().count();
    std::tm local{};
    return seconds(::localtime_r(&time, &local) ? local.tm_gmtoff : 0);
}

/// `wall` is local time, counted as if it were UTC. The offset changes at most once in the day before and
/// after.
sys_seconds fromLocalClocks(sys_seconds wall) {
    const seconds before = localOffset(wall - hours(24));
    const seconds after = localOffset(wall + hours(24));
    for (const seconds offset : {before, after})
        if (localOffset(wall - offset) == offset)
            return wall - offset;
    return wall - before;
}

} // namespace

std::optional<sys_seconds> dateFromText(const NSString& text) {
    const std::u16string_view units = text.utf16();
    if (!hasForm(units, forms[0]) && !hasForm(units, forms[1]))
        return std::nullopt;
    const year_month_day day{std::chrono::year(static_cast<int>(numberIn(units.substr(0, 4)))),
                             std::chrono::month(numberIn(units.substr(5, 2))),
                             std::chrono::day(numberIn(units.substr(8, 2)))};
    const unsigned hour = numberIn(units.substr(11, 2));
    const unsigned minute = numberIn(units.substr(14, 2));
    const unsigned second = numberIn(units.substr(17, 2));
    if (!day.ok() || day.year() == std::chrono::year(0) || hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    return fromLocalClocks(sys_days(day) + hours(hour) + minutes(minute) + seconds(second));
}

std::string isoText(sys_seconds date) {
    const minutes offset = std::chrono::floor<minutes>(localOffset(date));
    const sys_seconds wall = date + offset;
    const auto midnight = std::chrono::floor<std::chrono::days>(wall);
    const year_month_day day(midnight);
    const std::chrono::hh_mm_ss time(wall - midnight);
    const std::chrono::hh_mm_ss shown(std::chrono::abs(offset));
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d%c%02d:%02d",
                  static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                  static_cast<unsigned>(day.day()), static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()),
                  offset < minutes(0) ? '-' : '+', static_cast<int>(shown.hours().count()),
                  static_cast<int>(shown.minutes().count()));
    return text.data();
}

} // namespace kestrine

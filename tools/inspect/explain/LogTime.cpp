#include "inspect/explain/LogTime.h"

#include <algorithm>
#include <array>

namespace Inspect {

namespace {

constexpr int kSecondsPerMinute = 60;
constexpr int kSecondsPerHour = 3600;
constexpr int kSecondsPerDay = 86400;

/// Days from 1 January 1970 in the Gregorian calendar (the usual count with years that begin in March).
int daysFromCivil(int year, int month, int day) {
    year -= month <= 2 ? 1 : 0;
    const int era = year / 400;
    const int yearOfEra = year - era * 400;
    const int dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719468;
}

std::optional<int> takeTimeOfDay(LineCursor& cursor) {
    const auto hours = cursor.takeNumber(2);
    if (!hours || !cursor.take(":")) {
        return std::nullopt;
    }
    const auto minutes = cursor.takeNumber(2);
    if (!minutes || !cursor.take(":")) {
        return std::nullopt;
    }
    const auto seconds = cursor.takeNumber(2);
    return seconds ? std::optional(*hours * kSecondsPerHour + *minutes * kSecondsPerMinute + *seconds)
                   : std::nullopt;
}

double takeFraction(LineCursor& cursor) {
    if (!cursor.take(".")) {
        return 0;
    }
    const std::string_view before = cursor.rest();
    const auto number = cursor.takeNumber(0);
    double fraction = number.value_or(0);
    for (std::size_t digits = before.size() - cursor.rest().size(); digits > 0; --digits) {
        fraction /= 10;
    }
    return fraction;
}

/// "+0100" as seconds; 0 if there is none.
int takeZone(LineCursor& cursor) {
    const bool east = cursor.rest().starts_with('+');
    if (!east && !cursor.rest().starts_with('-')) {
        return 0;
    }
    static_cast<void>(cursor.take(east ? "+" : "-"));
    const int zone = cursor.takeNumber(4).value_or(0);
    const int seconds = zone / 100 * kSecondsPerHour + zone % 100 * kSecondsPerMinute;
    return east ? seconds : -seconds;
}

}  // namespace

std::optional<double> takeTimestamp(LineCursor& cursor) {
    const auto year = cursor.takeNumber(4);
    if (!year || !cursor.take("-")) {
        return std::nullopt;
    }
    const auto month = cursor.takeNumber(2);
    if (!month || !cursor.take("-")) {
        return std::nullopt;
    }
    const auto day = cursor.takeNumber(2);
    if (!day || !(cursor.take(" ") || cursor.take("T"))) {
        return std::nullopt;
    }
    const auto time = takeTimeOfDay(cursor);
    if (!time) {
        return std::nullopt;
    }
    const double fraction = takeFraction(cursor);
    const int zone = takeZone(cursor);
    return static_cast<double>(daysFromCivil(*year, *month, *day)) * kSecondsPerDay + *time - zone + fraction;
}

std::optional<double> takeShortTimestamp(LineCursor& cursor) {
    constexpr std::array<std::string_view, 12> kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    constexpr int kLeapYear = 2000;
    const auto* const month = std::find(kMonths.begin(), kMonths.end(), cursor.takeWord());
    if (month == kMonths.end() || !cursor.takeSpaces()) {
        return std::nullopt;
    }
    const auto day = cursor.takeNumber(0);
    if (!day || !cursor.takeSpaces()) {
        return std::nullopt;
    }
    const auto time = takeTimeOfDay(cursor);
    if (!time) {
        return std::nullopt;
    }
    const int number = static_cast<int>(month - kMonths.begin()) + 1;
    return static_cast<double>(daysFromCivil(kLeapYear, number, *day)) * kSecondsPerDay + *time;
}

}  // namespace Inspect

#include "readable_time.h"

#include <array>

namespace tarnwick {

namespace {

std::string counted(std::int64_t count, const std::string& unit)
{
    std::string text = std::to_string(count) + " " + unit;
    if (count != 1) {
        text += 's';
    }
    return text;
}

std::string twoDigits(std::int64_t number)
{
    std::string text = number < 10 ? "0" : "";
    text += std::to_string(number);
    return text;
}

} // namespace

std::string readableDuration(std::chrono::milliseconds duration)
{
    const std::int64_t seconds = std::chrono::ceil<std::chrono::seconds>(duration).count();
    const std::int64_t minutes = seconds / 60;
    const std::int64_t rest = seconds % 60;
    if (minutes == 0) {
        return counted(rest, "second");
    }
    std::string text = counted(minutes, "minute");
    if (rest != 0) {
        text += ' ';
        text += counted(rest, "second");
    }
    return text;
}

std::string readableMoment(Moment moment)
{
    constexpr std::array months = {"January", "February", "March",     "April",   "May",      "June",
                                   "July",    "August",   "September", "October", "November", "December"};
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(moment - day);
    return std::to_string(static_cast<unsigned>(date.day())) + " " +
           months.at(static_cast<unsigned>(date.month()) - 1) + " " + std::to_string(static_cast<int>(date.year())) +
           ", " + twoDigits(time.hours().count()) + ":" + twoDigits(time.minutes().count()) + " UTC";
}

} // namespace tarnwick

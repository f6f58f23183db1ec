#include "app/log_line.h"

#include <sys/time.h>

#include <array>
#include <cstdio>
#include <cstring>

char saveTime[kSaveTimeSize];

namespace {

constexpr std::int64_t kUtcPlus8 = 28800;
constexpr std::int64_t kDaysFrom1970To2001 = 11323;

struct LogDate {
    int year;
    int month;
    int day;
};

bool isLogLeapYear(int year)
{
    if (year % 1000 == 0)
        return year / 1000 % 4 == 0;
    return year % 4 == 0;
}

/// `days` counts from 2001-01-01. The quotients are not capped: the last day of a leap year is day 00 of the next.
LogDate logDate(std::int32_t days)
{
    const int cycles = days / 146097;
    int rest = days % 146097;
    const int centuries = rest / 36524;
    rest %= 36524;
    const int quads = rest / 1461;
    rest %= 1461;
    const int years = rest / 365;
    const int dayOfYear = rest % 365;
    const int year = 2001 + 400 * cycles + 100 * centuries + 4 * quads + years;

    std::array<int, 12> lengths{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (isLogLeapYear(year))
        lengths[1] = 29;

    int month = 1;
    int day = dayOfYear;
    if (day >= lengths[1]) {
        day -= lengths[1];
        for (std::size_t entry = 2;; ++entry) {
            ++month;
            if (entry == lengths.size() || day < lengths[entry])
                break;
            day -= lengths[entry];
        }
    }
    return {year, month, day};
}

} // namespace

void writeLogTime(std::int64_t seconds, std::int64_t microseconds)
{
    const std::int64_t shifted = seconds + kUtcPlus8;
    const LogDate date = logDate(static_cast<std::int32_t>(shifted / 86400 - kDaysFrom1970To2001));
    const int hour = static_cast<int>(shifted / 3600 % 24);
    const int minute = static_cast<int>(shifted / 60 % 60);
    const int second = static_cast<int>(shifted % 60);
    const int milliseconds = static_cast<int>(microseconds / 1000);

    std::memset(saveTime, 0, sizeof saveTime);
    std::snprintf(saveTime, sizeof saveTime, "%04d/%02d/%02d %02d%02d%02d-%03d", date.year, date.month, date.day, hour,
                  minute, second, milliseconds);
}

const char *logTime()
{
    timeval now{};
    gettimeofday(&now, nullptr);
    writeLogTime(now.tv_sec, now.tv_usec);
    return saveTime;
}

QString separatorLine(const char *tag)
{
    return QString::asprintf("[%s] [%s] ------------------------------------------", logTime(), tag);
}

QString deviceNotOpenLine(const char *tag)
{
    return QString::asprintf("[%s] [%s] 设备未打开！", logTime(), tag);
}

#include <Varnex/protocols/ProtocolHTTP.h>

#include <Varnex/transport/LowerCase.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <optional>
#include <span>
#include <string_view>

namespace Varnex {

namespace {

constexpr std::array<std::string_view, 7> kWeekdays = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                       "Thursday", "Friday", "Saturday"};
constexpr std::array<std::string_view, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr std::size_t kShortName = 3;
constexpr std::size_t kMaxWords = 6;
constexpr int kFirstYear = 1900;  // of std::tm
constexpr int kYearsAhead = 50;

bool isSame(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lowerCase(x) == lowerCase(y); });
}

bool isWeekday(std::string_view word) {
    return std::any_of(kWeekdays.begin(), kWeekdays.end(), [&](std::string_view day) {
        return isSame(word, day) || isSame(word, day.substr(0, kShortName));
    });
}

/// A number of at least 1 and at most `maxDigits` digits, or -1.
int number(std::string_view word, std::size_t maxDigits) {
    int value = 0;
    if (word.empty() || word.size() > maxDigits || word[0] == '-') return -1;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    return error == std::errc() && end == word.data() + word.size() ? value : -1;
}

/// The pieces between separators; one more than `out` has room for is a count beyond it.
std::size_t split(std::string_view text, std::string_view separators, std::span<std::string_view> out) {
    std::size_t count = 0;
    while (count <= out.size()) {
        text.remove_prefix(std::min(text.find_first_not_of(separators), text.size()));
        if (text.empty()) break;
        const std::string_view word = text.substr(0, text.find_first_of(separators));
        if (count < out.size()) out[count] = word;
        ++count;
        text.remove_prefix(word.size());
    }
    return count;
}

bool isLeapYear(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysOf(int month, int year) {
    constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return kDays[static_cast<std::size_t>(month)] + (month == 1 && isLeapYear(year) ? 1 : 0);
}

bool readClock(std::string_view word, std::tm& date) {
    if (word.size() != 8 || word[2] != ':' || word[5] != ':') return false;
    const std::vector<unsigned long> parts = ProtocolHTTP::parseNumber(std::string(word), ':');
    if (parts.size() != 3 || parts[0] > 23 || parts[1] > 59 || parts[2] > 60) return false;  // 60: a leap second
    date.tm_hour = static_cast<int>(parts[0]);
    date.tm_min = static_cast<int>(parts[1]);
    date.tm_sec = static_cast<int>(parts[2]);
    return true;
}

bool readMonth(std::string_view word, std::tm& date) {
    const auto month =
        std::find_if(kMonths.begin(), kMonths.end(), [&](std::string_view name) { return isSame(word, name); });
    date.tm_mon = static_cast<int>(month - kMonths.begin());
    return month != kMonths.end();
}

/// The latest year that ends in these two digits in which `date` is not more than 50 years ahead.
int fullYear(std::tm date, int lastDigits) {
    const std::time_t now = std::time(nullptr);
    std::tm limit{};
    if (::gmtime_r(&now, &limit) == nullptr) return -1;
    limit.tm_year += kYearsAhead;
    int year = (limit.tm_year + kFirstYear) / 100 * 100 + lastDigits;
    date.tm_year = year - kFirstYear;
    if (::timegm(&date) > ::timegm(&limit)) year -= 100;
    return year;
}

/// Of two digits only where the form has two.
int readYear(std::string_view word, const std::tm& date, bool mayBeShort) {
    if (word.size() == 4) return number(word, 4);
    const int year = mayBeShort && word.size() == 2 ? number(word, 2) : -1;
    return year < 0 ? -1 : fullYear(date, year);
}

/// -1: not a date.
long timeOf(std::string_view day, std::string_view month, std::string_view year, std::string_view clock,
            bool mayBeShort = false) {
    std::tm date{};
    date.tm_mday = number(day, 2);
    if (!readMonth(month, date) || !readClock(clock, date)) return -1;
    const int fullYear = readYear(year, date, mayBeShort);
    if (fullYear < 0 || date.tm_mday < 1 || date.tm_mday > daysOf(date.tm_mon, fullYear)) return -1;
    date.tm_year = fullYear - kFirstYear;
    return ::timegm(&date);
}

}  // namespace

std::vector<unsigned long> ProtocolHTTP::parseNumber(const std::string& s, char sep) {
    std::vector<unsigned long> numbers;
    const char *at = s.data(), *const end = at + s.size();
    for (;; ++at) {
        unsigned long value = 0;
        const auto [next, error] = std::from_chars(at, end, value);
        if (error != std::errc() || (next != end && *next != sep)) return {};
        numbers.push_back(value);
        at = next;
        if (at == end) return numbers;
    }
}

std::string ProtocolHTTP::createTimestamp(long time) {
    const std::time_t seconds = time;
    std::tm date{};
    if (::gmtime_r(&seconds, &date) == nullptr) return {};
    const long year = static_cast<long>(date.tm_year) + kFirstYear;
    if (year < 0 || year > 9999) return {};
    char text[96];
    const int size = std::snprintf(text, sizeof text, "%.3s, %02d %s %04ld %02d:%02d:%02d GMT",
                                   kWeekdays[static_cast<std::size_t>(date.tm_wday)].data(), date.tm_mday,
                                   kMonths[static_cast<std::size_t>(date.tm_mon)].data(), year, date.tm_hour,
                                   date.tm_min, date.tm_sec);
    return {text, static_cast<std::size_t>(size)};
}

long ProtocolHTTP::parseTimestamp(const std::string& text) {
    std::array<std::string_view, kMaxWords> words;
    const std::size_t count = split(text, " ,", words);
    if (count < 4 || count > kMaxWords || !isWeekday(words[0])) return -1;
    if (count == 5) return timeOf(words[2], words[1], words[4], words[3]);  // of asctime
    if (!isSame(words[count - 1], "GMT")) return -1;
    if (count == 6) return timeOf(words[1], words[2], words[3], words[4]);
    std::array<std::string_view, 3> date;  // of RFC 850
    if (split(words[1], "-", date) != date.size()) return -1;
    return timeOf(date[0], date[1], date[2], words[2], true);
}

}  // namespace Varnex

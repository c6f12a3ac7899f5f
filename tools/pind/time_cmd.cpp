// `pind time`: one schedule check or conversion against a server clock synchronised to a given
// instant and zone, with every clock held still at that instant; and the time step of the demo.
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>
#include <string>
#include <vector>

#include "Commands.h"
#include "ToolSupport.h"
#include "pind/platform/Clock.h"
#include "pind/platform/System.h"
#include "pind/time/PindTime.h"
#include "pind/time/TimeText.h"

namespace pind::tool {
namespace {

const char kUsageLine[] =
    "usage: pind time [--server UTC_SECONDS] [--zone SECONDS_WEST] CHECK [ARG ...]\n"
    "       (pind time --help lists the checks)";

const char kUsage[] =
    "usage: pind time [--server UTC_SECONDS] [--zone SECONDS_WEST] CHECK [ARG ...]\n"
    "       pind time [--server UTC_SECONDS] [--zone SECONDS_WEST] now\n"
    "\n"
    "Synchronises the server clock to UTC_SECONDS (default: the machine's time) in a zone\n"
    "SECONDS_WEST of UTC (UTC+8 is -28800; default 0), holds every clock at that instant, runs\n"
    "CHECK and prints its result on one line: integers in decimal, booleans as 1 or 0, texts as\n"
    "they are. `now` prints the server wall time in text modes 0, 3 and 4. The machine's own zone\n"
    "comes from TZ. Numbers are decimal with an optional sign and must fit their type; a LIST is\n"
    "comma-separated numbers, or - for an empty list.\n"
    "\n"
    "checks:\n"
    "  IsInCalendar MONTHS DAYS WEEKDAYS       (LISTs; weekdays 1 Monday .. 7 Sunday)\n"
    "  IsInDailyWindow START END               (HHMM)\n"
    "  IsInDateWindow START END                (YYMMDDhhmm, unsigned 32-bit)\n"
    "  GetWeeklyWindowRemain START END         (DHHMM, D 0 Monday .. 6 Sunday)\n"
    "  IsWeekdayInMask MASK                    (unsigned 32-bit, bit 0 Monday)\n"
    "  GetActivityState START END              (YYYYMMDDhhmm, 64-bit)\n"
    "  GetActivityStateByOpenDay FIRST_DAY DAYS BASE DEADLINE\n"
    "                                          (32-bit, 32-bit, 64-bit seconds, YYMMDDhhmm)\n"
    "  SecondsUntil Y M D h m s                (month 1-12)\n"
    "  MinutesSince Y M D h m, MinutesUntil Y M D h m\n"
    "  DaysSince Y M D, DaysUntil Y M D\n"
    "  SecondsUntilPacked V, PackedToServerTime V      (64-bit)\n"
    "  YYMMDDhhmmToServerTime V                (unsigned 32-bit)\n"
    "  SecondsUntilInstant T, MonthStart T     (64-bit seconds)\n"
    "  ServerTmAt T                            (prints Y-M-D h:m:s WEEKDAY YEARDAY; 0 = now)\n"
    "  ShiftToWeekday WEEKDAY T                (weekday 1 Sunday .. 7 Saturday)\n"
    "  NextWeekdayTime T WEEKDAY FLAG          (weekday 1 Monday .. 7 Sunday; FLAG 0 or 1)\n"
    "  ServerTimeText MODE                     (0, 3 or 4; other modes print an empty line)\n"
    "  NowPackedYYMMDDhhmmss, NowPackedYYMMDDhhmm, NowPackedYYMMDD, NowHHMM, GetServerWeekday,\n"
    "  SecondsToNextDay, GetZoneHours, NowMMDD (no arguments)";

// Every clock held at one instant: the wall at the server's seconds, the ticks where they were.
class StillClock final : public platform::ClockSource {
public:
    StillClock(int64_t unixMs, const platform::ClockSource& from)
        : m_unixMs(unixMs),
          m_tick(from.TimeGetTime()),
          m_counter(from.PerformanceCounter()),
          m_frequency(from.PerformanceFrequency()),
          m_process(from.ProcessClock()) {}
    uint32_t TimeGetTime() const override { return m_tick; }
    uint32_t GetTickCount() const override { return m_tick; }
    int64_t PerformanceCounter() const override { return m_counter; }
    int64_t PerformanceFrequency() const override { return m_frequency; }
    int32_t ProcessClock() const override { return m_process; }
    int64_t UnixTimeMs() const override { return m_unixMs; }

private:
    int64_t m_unixMs;
    uint32_t m_tick;
    int64_t m_counter;
    int64_t m_frequency;
    int32_t m_process;
};

// Optional sign, then one or more decimal digits (leading zeros allowed), within [lo, hi].
bool ParseNumber(const char* text, int64_t lo, int64_t hi, int64_t* out) {
    const char* p = text;
    const bool negative = *p == '-';
    if (*p == '-' || *p == '+') {
        ++p;
    }
    if (*p == '\0') {
        return false;
    }
    // Accumulate the magnitude as unsigned so that INT64_MIN parses too.
    uint64_t magnitude = 0;
    const uint64_t limit = negative ? uint64_t{1} << 63 : uint64_t{INT64_MAX};
    for (; *p != '\0'; ++p) {
        if (*p < '0' || *p > '9') {
            return false;
        }
        const uint64_t digit = static_cast<uint64_t>(*p - '0');
        if (magnitude > (limit - digit) / 10) {
            return false;
        }
        magnitude = magnitude * 10 + digit;
    }
    const int64_t value =
        negative ? static_cast<int64_t>(0 - magnitude) : static_cast<int64_t>(magnitude);
    if (value < lo || value > hi) {
        return false;
    }
    *out = value;
    return true;
}

constexpr int64_t kI32Min = std::numeric_limits<int32_t>::min();
constexpr int64_t kI32Max = std::numeric_limits<int32_t>::max();
constexpr int64_t kU32Max = std::numeric_limits<uint32_t>::max();
constexpr int64_t kI64Min = std::numeric_limits<int64_t>::min();
constexpr int64_t kI64Max = std::numeric_limits<int64_t>::max();

bool ParseList(const char* text, std::vector<int32_t>* out) {
    out->clear();
    if (std::strcmp(text, "-") == 0) {
        return true;
    }
    const std::string all(text);
    size_t at = 0;
    while (true) {
        const size_t comma = all.find(',', at);
        const std::string item = all.substr(at, comma == std::string::npos ? comma : comma - at);
        int64_t value = 0;
        if (!ParseNumber(item.c_str(), kI32Min, kI32Max, &value)) {
            return false;
        }
        out->push_back(static_cast<int32_t>(value));
        if (comma == std::string::npos) {
            return true;
        }
        at = comma + 1;
    }
}

// One parsed argument: a number, or a list for the calendar check.
struct Arg {
    int64_t n = 0;
    std::vector<int32_t> list;
};
using Args = std::vector<Arg>;

int32_t I32(const Arg& a) { return static_cast<int32_t>(a.n); }
uint32_t U32(const Arg& a) { return static_cast<uint32_t>(a.n); }

std::string Num(int64_t v) { return std::to_string(v); }
std::string Bool(bool v) { return v ? "1" : "0"; }

std::string TmLine(const std::tm* tm) {
    if (tm == nullptr) {
        return std::string();
    }
    char line[96];
    std::snprintf(line, sizeof line, "%d-%d-%d %d:%d:%d %d %d", tm->tm_year + 1900, tm->tm_mon + 1,
                  tm->tm_mday, tm->tm_hour, tm->tm_min, tm->tm_sec, tm->tm_wday, tm->tm_yday);
    return line;
}

// Argument kinds, one letter each: i i32, u u32, I i64, L list, f flag (0 or 1).
struct Check {
    const char* name;
    const char* kinds;
    std::string (*run)(const Args& a);
};

const Check kChecks[] = {
    {"IsInCalendar", "LLL",
     [](const Args& a) { return Bool(IsInCalendar(a[0].list, a[1].list, a[2].list)); }},
    {"IsInDailyWindow", "ii",
     [](const Args& a) { return Bool(IsInDailyWindow(I32(a[0]), I32(a[1]))); }},
    {"IsInDateWindow", "uu",
     [](const Args& a) { return Bool(IsInDateWindow(U32(a[0]), U32(a[1]))); }},
    {"GetWeeklyWindowRemain", "ii",
     [](const Args& a) { return Num(GetWeeklyWindowRemain(I32(a[0]), I32(a[1]))); }},
    {"IsWeekdayInMask", "u", [](const Args& a) { return Bool(IsWeekdayInMask(U32(a[0]))); }},
    {"GetActivityState", "II", [](const Args& a) { return Num(GetActivityState(a[0].n, a[1].n)); }},
    {"GetActivityStateByOpenDay", "iiIu",
     [](const Args& a) {
         return Num(GetActivityStateByOpenDay(I32(a[0]), I32(a[1]), a[2].n, U32(a[3])));
     }},
    {"SecondsUntil", "iiiiii",
     [](const Args& a) {
         return Num(SecondsUntil(I32(a[0]), I32(a[1]), I32(a[2]), I32(a[3]), I32(a[4]), I32(a[5])));
     }},
    {"MinutesSince", "iiiii",
     [](const Args& a) {
         return Num(MinutesSince(I32(a[0]), I32(a[1]), I32(a[2]), I32(a[3]), I32(a[4])));
     }},
    {"MinutesUntil", "iiiii",
     [](const Args& a) {
         return Num(MinutesUntil(I32(a[0]), I32(a[1]), I32(a[2]), I32(a[3]), I32(a[4])));
     }},
    {"DaysSince", "iii",
     [](const Args& a) { return Num(DaysSince(I32(a[0]), I32(a[1]), I32(a[2]))); }},
    {"DaysUntil", "iii",
     [](const Args& a) { return Num(DaysUntil(I32(a[0]), I32(a[1]), I32(a[2]))); }},
    {"SecondsUntilPacked", "I", [](const Args& a) { return Num(SecondsUntilPacked(a[0].n)); }},
    {"PackedToServerTime", "I", [](const Args& a) { return Num(PackedToServerTime(a[0].n)); }},
    {"YYMMDDhhmmToServerTime", "u",
     [](const Args& a) { return Num(YYMMDDhhmmToServerTime(U32(a[0]))); }},
    {"SecondsUntilInstant", "I", [](const Args& a) { return Num(SecondsUntilInstant(a[0].n)); }},
    {"MonthStart", "I", [](const Args& a) { return Num(MonthStart(a[0].n)); }},
    {"ServerTmAt", "I",
     [](const Args& a) { return TmLine(CPindTime::Instance()->ServerTmAt(a[0].n)); }},
    {"ShiftToWeekday", "iI", [](const Args& a) { return Num(ShiftToWeekday(I32(a[0]), a[1].n)); }},
    {"NextWeekdayTime", "Iif",
     [](const Args& a) { return Num(NextWeekdayTime(a[0].n, I32(a[1]), I32(a[2]))); }},
    {"ServerTimeText", "i", [](const Args& a) { return std::string(ServerTimeText(I32(a[0]))); }},
    {"NowPackedYYMMDDhhmmss", "", [](const Args&) { return Num(NowPackedYYMMDDhhmmss()); }},
    {"NowPackedYYMMDDhhmm", "", [](const Args&) { return Num(NowPackedYYMMDDhhmm()); }},
    {"NowPackedYYMMDD", "", [](const Args&) { return Num(NowPackedYYMMDD()); }},
    {"NowHHMM", "", [](const Args&) { return Num(NowHHMM()); }},
    {"GetServerWeekday", "", [](const Args&) { return Num(GetServerWeekday()); }},
    {"SecondsToNextDay", "", [](const Args&) { return Num(SecondsToNextDay()); }},
    {"GetZoneHours", "", [](const Args&) { return Num(GetZoneHours()); }},
    {"NowMMDD", "", [](const Args&) { return Num(NowMMDD()); }},
    {"now", "",
     [](const Args&) {
         std::string lines = ServerTimeText(0);
         lines.append("\n").append(ServerTimeText(3)).append("\n").append(ServerTimeText(4));
         return lines;
     }},
};

bool ParseArg(char kind, const char* text, Arg* out) {
    switch (kind) {
        case 'i':
            return ParseNumber(text, kI32Min, kI32Max, &out->n);
        case 'u':
            return ParseNumber(text, 0, kU32Max, &out->n);
        case 'I':
            return ParseNumber(text, kI64Min, kI64Max, &out->n);
        case 'f':
            return ParseNumber(text, 0, 1, &out->n);
        default:
            return ParseList(text, &out->list);
    }
}

const char* KindName(char kind) {
    switch (kind) {
        case 'i':
            return "a 32-bit integer";
        case 'u':
            return "an unsigned 32-bit integer";
        case 'I':
            return "a 64-bit integer";
        case 'f':
            return "0 or 1";
        default:
            return "a list of 32-bit integers (or -)";
    }
}

}  // namespace

int RunTime(int argc, char** argv) {
    if (WantsHelp(argc, argv)) {
        return PrintUsage(kUsage);
    }
    int64_t server = -1;
    int64_t zone = 0;
    int i = 1;
    for (; i < argc; ++i) {
        const bool isServer = std::strcmp(argv[i], "--server") == 0;
        if (!isServer && std::strcmp(argv[i], "--zone") != 0) {
            break;
        }
        if (i + 1 >= argc) {
            return UsageError("time", kUsageLine, std::string(argv[i]) + " needs a value");
        }
        const char* value = argv[++i];
        const bool ok = isServer ? ParseNumber(value, 0, kI64Max, &server)
                                 : ParseNumber(value, kI32Min, kI32Max, &zone);
        if (!ok) {
            return UsageError("time", kUsageLine,
                              std::string(argv[i - 1]) + ": " + value + ": not " +
                                  (isServer ? "a non-negative 64-bit integer" : KindName('i')));
        }
    }
    if (i >= argc) {
        return UsageError("time", kUsageLine, "no CHECK given");
    }
    const char* name = argv[i++];
    const Check* check = nullptr;
    for (const Check& c : kChecks) {
        if (std::strcmp(c.name, name) == 0) {
            check = &c;
        }
    }
    if (check == nullptr) {
        return UsageError("time", kUsageLine, std::string(name) + ": unknown check");
    }
    const size_t want = std::strlen(check->kinds);
    if (static_cast<size_t>(argc - i) != want) {
        return UsageError("time", kUsageLine,
                          std::string(name) + " takes " + std::to_string(want) + " argument" +
                              (want == 1 ? "" : "s") + ", not " + std::to_string(argc - i));
    }
    Args args(want);
    for (size_t k = 0; k < want; ++k) {
        if (!ParseArg(check->kinds[k], argv[i + k], &args[k])) {
            return UsageError(
                "time", kUsageLine,
                std::string(name) + ": " + argv[i + k] + ": not " + KindName(check->kinds[k]));
        }
    }

    if (server < 0) {
        server = platform::Time64();
    }
    const int64_t wallMs =
        server > kI64Max / 1000 ? kI64Max : server * 1000;  // beyond any calendar either way
    const StillClock still(wallMs, platform::CurrentClock());
    const platform::ClockSource* previous = platform::SetClockSource(&still);
    CPindTime::Instance()->SyncServerTime(static_cast<uint64_t>(server),
                                          static_cast<int32_t>(zone));
    const std::string line = check->run(args) + "\n";
    platform::SetClockSource(previous);
    platform::SetBinaryMode(stdout);  // "\n", not "\r\n", on Windows too: scripts compare bytes
    return WriteOut(line) && FlushOut() ? kExitOk : kExitFailure;
}

void DemoTime(const DemoContext&) {
    DemoHeading("server time and activity schedules");
    // 2023-11-14 12:30:15 on a server at UTC+8 (04:30:15 UTC), a Tuesday.
    const int64_t server = 1699936215;
    const StillClock still(server * 1000, platform::CurrentClock());
    const platform::ClockSource* previous = platform::SetClockSource(&still);
    CPindTime* time = CPindTime::Instance();
    time->SyncServerTime(server, -28800);
    std::printf("  SyncServerTime(%" PRId64 ", -28800): UTC+8, GetZoneHours() = %d\n", server,
                time->GetZoneHours());
    // One buffer serves every mode: copy each text before asking for the next.
    const std::string day = ServerTimeText(0);
    const std::string second = ServerTimeText(3);
    std::printf("  ServerTimeText: 0 \"%s\", 3 \"%s\", 4 \"%s\"\n", day.c_str(), second.c_str(),
                ServerTimeText(4));
    std::printf("  NowPackedYYMMDDhhmm() = %u, NowHHMM() = %d, GetServerWeekday() = %d (Tuesday)\n",
                time->NowPackedYYMMDDhhmm(), time->NowHHMM(), time->GetServerWeekday());
    std::printf("  IsInDailyWindow(1200, 1400) = %d, IsInDailyWindow(2200, 200) = %d (no wrap)\n",
                time->IsInDailyWindow(1200, 1400), time->IsInDailyWindow(2200, 200));
    std::printf("  IsInDateWindow(2311141200, 2311141300) = %d\n",
                time->IsInDateWindow(2311141200u, 2311141300u));
    std::printf("  GetWeeklyWindowRemain(11200, 11300) = %d s left of Tuesday 12:00-13:00\n",
                time->GetWeeklyWindowRemain(11200, 11300));
    std::printf("  IsWeekdayInMask(0b0000010) = %d (Tuesday), IsWeekdayInMask(1) = %d (Monday)\n",
                time->IsWeekdayInMask(2), time->IsWeekdayInMask(1));
    std::printf("  IsInCalendar({11}, {}, {2}) = %d (November, Tuesdays)\n",
                time->IsInCalendar({11}, {}, {2}));
    std::printf("  GetActivityState: not yet %d, open %d, over %d\n",
                time->GetActivityState(202311150000, 202311160000),
                time->GetActivityState(202311140000, 202311150000),
                time->GetActivityState(202311010000, 202311140000));
    std::printf("  SecondsUntil(2023, 11, 15, 0, 0, 0) = %" PRId64 " (to server midnight)\n",
                time->SecondsUntil(2023, 11, 15, 0, 0, 0));
    std::printf("  PackedToServerTime(20231114123015) = %" PRId64 "\n",
                time->PackedToServerTime(20231114123015));
    platform::SetClockSource(previous);
    CPindTime::DestroyInstance();
}

}  // namespace pind::tool

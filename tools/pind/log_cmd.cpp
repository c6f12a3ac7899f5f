// `pind log`: one record through the default logger, or `pind log view` to read day files back;
// and the logging demo step.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <tuple>
#include <vector>

#include "Commands.h"
#include "ToolSupport.h"
#include "pind/json/FmtJson.h"
#include "pind/logging/LogLineParser.h"
#include "pind/logging/Logger.h"
#include "pind/platform/Clock.h"
#include "pind/platform/System.h"
#include "pind/platform/Terminal.h"
#include "pind/platform/TimeZone.h"

namespace pind::tool {

// One usage text for both forms: the first argument "view" selects the viewer, so a record whose
// message is "view" is written with `pind log -- view`.
const char kLogUsage[] =
    "usage: pind log [--level NAME] [--cate C] [--folder F] [--] MESSAGE [key=value ...]\n"
    "       pind log view [FILE|FOLDER ...] [--level NAME] [--cate C]... [--since T] [--until T]\n"
    "                     [--grep TEXT] [--follow] [--max N] [--json] [--no-color] [--raw]\n"
    "  The first form writes one record through the default logger to\n"
    "  ./F/<year>_<month>_<day>_x64.log (F is debug by default; always below the current folder)\n"
    "  and prints the file's path. NAME: TRACE DEBUG INFO WARN ERROR FATAL or 0-5 (default INFO);\n"
    "  key=value adds attributes (-digits: a number, true/false: a boolean, else text); -- makes\n"
    "  the next argument the message even when it is \"view\" or starts with --.\n"
    "  view prints log lines one per line: time, level, category, message, key=value attributes.\n"
    "  A FOLDER means its *_x64.log files in date order; no argument means ./debug. Texts are\n"
    "  shown as UTF-8 (GBK converted; --raw keeps the bytes); a line that is not a record is\n"
    "  shown as it is after \"??\". Filters: --level at or above NAME; --cate in the given set;\n"
    "  --since/--until T, T is \"YYYY-MM-DD[ hh:mm[:ss]]\" local time or -N with s, m, h or d\n"
    "  (-15m: the last 15 minutes); --grep TEXT in the message. Lines that are not records pass\n"
    "  --level and --cate. --follow keeps reading as lines are appended, moving on to the next\n"
    "  day's file when one appears, until interrupted; --max stops after N lines. --json prints\n"
    "  one JSON object per line: \"time\", the header fields, \"msg\", the top-level attributes\n"
    "  and \"attr\" (numbers as numbers, quoted true/false as booleans, an empty value as null,\n"
    "  a repeated key only once). Colour only on a terminal, and never with --no-color.";

namespace {

// -digits -> 64-bit number (kind 10), true/false -> boolean, anything else (and digits that do
// not fit 64 bits) -> text.
_log::LogValue ParseValue(const std::string& text) {
    const size_t start = (!text.empty() && text[0] == '-') ? 1 : 0;
    if (text.size() > start && text.find_first_not_of("0123456789", start) == std::string::npos) {
        errno = 0;
        const long long n = std::strtoll(text.c_str(), nullptr, 10);
        if (errno == 0) {
            return _log::LogValue(n);
        }
    }
    if (text == "true" || text == "false") {
        return _log::LogValue(text == "true");
    }
    return _log::LogValue(text);
}

// A level name in any case, or its number.
bool ParseLevel(const char* name, uint32_t* level) {
    std::string upper(name);
    for (char& c : upper) {
        c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
    }
    for (uint32_t i = 0; i < 6; ++i) {
        if (upper == _log::LevelName(i) || upper == std::to_string(i)) {
            *level = i;
            return true;
        }
    }
    return false;
}

// "./<log folder>/<year>_<month>_<day><suffix>" for the local day now, as the writer builds it.
std::string DayFilePath(const std::string& suffix) {
    std::tm local{};
    platform::LocalTime64(platform::Time64(), &local);
    return "./" + pind::detail::GetLogFolderName() + "/" + std::to_string(local.tm_year + 1900) +
           "_" + std::to_string(local.tm_mon + 1) + "_" + std::to_string(local.tm_mday) + suffix;
}

// Why a line could not be appended to `path`: the first part of it that is missing, not a folder
// or not writable, in the system's words.
std::string WriteFailureReason(const std::string& path) {
    const std::filesystem::path file(path);
    std::error_code ec;
    const std::filesystem::file_status folder = std::filesystem::status(file.parent_path(), ec);
    if (ec) {
        return file.parent_path().generic_string() + ": " + ec.message();
    }
    if (folder.type() != std::filesystem::file_type::directory) {
        return file.parent_path().generic_string() + ": not a folder";
    }
    const std::filesystem::file_status status = std::filesystem::status(file, ec);
    if (status.type() == std::filesystem::file_type::directory) {
        return "is a folder";
    }
    if (status.type() == std::filesystem::file_type::not_found) {
        return "cannot create files in " + file.parent_path().generic_string();
    }
    // Opened for update only, so that asking creates nothing.
    std::FILE* f = std::fopen(path.c_str(), "r+b");
    if (f == nullptr) {
        return std::strerror(errno);
    }
    std::fclose(f);
    return "the line did not reach the file";
}

class PrintingCallback : public _log::ILogCallback {
public:
    void OnLog(uint32_t level, const char* text) override {
        std::printf("  callback got level %u: %s\n", level, text);
    }
};

constexpr auto kPollInterval = std::chrono::milliseconds(200);

struct ViewOptions {
    std::vector<std::string> inputs;
    bool hasLevel = false;
    uint32_t minLevel = 0;
    std::set<std::string> cates;
    std::string since;  // "YYYY-MM-DD hh:mm:ss" local, "" for no bound
    std::string until;
    bool hasGrep = false;
    std::string grep;
    bool follow = false;
    bool json = false;
    bool color = true;
    bool raw = false;
    long long max = -1;  // lines to print before stopping; -1 for all
};

bool IsValidUtf8(const std::string& s) {
    size_t i = 0;
    while (i < s.size()) {
        const unsigned char c = static_cast<unsigned char>(s[i]);
        size_t n = 0;                        // continuation bytes
        unsigned char lo = 0x80, hi = 0xBF;  // the allowed range of the first one
        if (c < 0x80) {
            n = 0;
        } else if (c >= 0xC2 && c <= 0xDF) {
            n = 1;
        } else if (c >= 0xE0 && c <= 0xEF) {
            n = 2;
            lo = c == 0xE0 ? 0xA0 : 0x80;  // no overlong forms
            hi = c == 0xED ? 0x9F : 0xBF;  // no surrogates
        } else if (c >= 0xF0 && c <= 0xF4) {
            n = 3;
            lo = c == 0xF0 ? 0x90 : 0x80;
            hi = c == 0xF4 ? 0x8F : 0xBF;  // nothing past U+10FFFF
        } else {
            return false;
        }
        if (n > s.size() - i - 1) return false;
        for (size_t k = 1; k <= n; ++k) {
            const unsigned char b = static_cast<unsigned char>(s[i + k]);
            if (b < (k == 1 ? lo : 0x80) || b > (k == 1 ? hi : 0xBF)) return false;
        }
        i += n + 1;
    }
    return true;
}

// Text as UTF-8: kept when it already is (clients log UTF-8 too), else read as GBK; a byte that
// is neither becomes "\xNN" for people, or U+FFFD for JSON.
std::string ToUtf8(const std::string& text, bool forJson) {
    if (IsValidUtf8(text)) {
        return text;
    }
    std::string out;
    size_t i = 0;
    while (i < text.size()) {
        i += platform::GbkToUtf8(text.data() + i, text.size() - i, &out);
        if (i < text.size()) {
            if (forJson) {
                out += "\xef\xbf\xbd";
            } else {
                static const char kHex[] = "0123456789abcdef";
                const unsigned char b = static_cast<unsigned char>(text[i]);
                out += "\\x";
                out += kHex[b >> 4];
                out += kHex[b & 15];
            }
            ++i;
        }
    }
    return out;
}

// Control bytes written out as escapes, so that a line stays one line and cannot drive the
// terminal.
std::string Printable(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        const unsigned char b = static_cast<unsigned char>(c);
        if (b >= 0x20 && b != 0x7F) {
            out.push_back(c);
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c == '\r') {
            out += "\\r";
        } else {
            static const char kHex[] = "0123456789abcdef";
            out += "\\x";
            out += kHex[b >> 4];
            out += kHex[b & 15];
        }
    }
    return out;
}

std::string Shown(const std::string& text, const ViewOptions& opt) {
    return Printable(opt.raw ? text : ToUtf8(text, false));
}

void AppendJsonString(std::string* out, const std::string& text) {
    const std::string utf8 = ToUtf8(text, true);
    out->push_back('"');
    for (char c : utf8) {
        const unsigned char b = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out->push_back('\\');
            out->push_back(c);
        } else if (b < 0x20) {
            char esc[8];
            std::snprintf(esc, sizeof esc, "\\u%04x", b);
            out->append(esc);
        } else {
            out->push_back(c);
        }
    }
    out->push_back('"');
}

// A bare value as JSON: nothing is null, a JSON text (a number, a ready-made fragment) is kept,
// anything else ("nan", a lone character) is a string.
void AppendJsonBare(std::string* out, const std::string& value) {
    if (value.empty()) {
        out->append("null");
        return;
    }
    const std::string utf8 = ToUtf8(value, true);
    if (JsonNode* node = JsonParse(utf8.data(), utf8.size())) {
        JsonFree(node);
        out->append(utf8);
        return;
    }
    AppendJsonString(out, value);
}

// Booleans are printed quoted, so a quoted true/false is taken as the boolean it almost always is.
void AppendJsonField(std::string* out, const _log::LogLineField& f) {
    if (f.bQuoted && (f.strValue == "true" || f.strValue == "false")) {
        out->append(f.strValue);
    } else if (f.bQuoted) {
        AppendJsonString(out, f.strValue);
    } else {
        AppendJsonBare(out, f.strValue);
    }
}

// One object per line; a key already present in the same object is left out, so every key is
// unique.
std::string JsonLine(const _log::LogLine& line) {
    std::string out = "{";
    std::set<std::string> seen;
    auto key = [&](const std::string& k) {
        if (!seen.insert(k).second) return false;
        if (out.size() > 1) out.push_back(',');
        AppendJsonString(&out, k);
        out.push_back(':');
        return true;
    };
    if (key("time")) {
        if (line.strLineTime.empty()) {
            out.append("null");
        } else {
            AppendJsonString(&out, line.strLineTime);
        }
    }
    if (!line.bRecord) {
        key("unparsed");
        AppendJsonString(&out, line.strLine);
        return out + "}\n";
    }
    for (const _log::LogLineField& f : line.vecHeader) {
        if (key(f.strKey)) {
            // Header texts (time, level, source) stay strings; only "ts" is a number.
            if (f.bQuoted) {
                AppendJsonString(&out, f.strValue);
            } else {
                AppendJsonBare(&out, f.strValue);
            }
        }
    }
    if (key("msg")) AppendJsonString(&out, line.strMsg);
    for (const _log::LogLineField& f : line.vecTop) {
        if (key(f.strKey)) AppendJsonField(&out, f);
    }
    if (!line.vecContext.empty() && key("attr")) {
        out.push_back('{');
        std::set<std::string> inner;
        for (const _log::LogLineField& f : line.vecContext) {
            if (!inner.insert(f.strKey).second) continue;
            if (out.back() != '{') out.push_back(',');
            AppendJsonString(&out, f.strKey);
            out.push_back(':');
            AppendJsonField(&out, f);
        }
        out.push_back('}');
    }
    return out + "}\n";
}

const char* LevelColor(const std::string& level) {
    if (level == "TRACE" || level == "DEBUG") return "\x1b[2m";
    if (level == "WARN") return "\x1b[33m";
    if (level == "ERROR" || level == "FATAL") return "\x1b[31m";
    return nullptr;
}

void AppendAttribute(std::string* out, const _log::LogLineField& f, const ViewOptions& opt) {
    out->push_back(' ');
    out->append(Shown(f.strKey, opt));
    out->push_back('=');
    const std::string value = Shown(f.strValue, opt);
    // Quoted texts that hold blanks (or nothing) keep their quotes, so the pairs stay apart.
    if (f.bQuoted && (value.empty() || value.find_first_of(" \"=") != std::string::npos)) {
        out->push_back('"');
        for (char c : value) {
            if (c == '"') out->push_back('\\');
            out->push_back(c);
        }
        out->push_back('"');
    } else {
        out->append(value);
    }
}

// "time LEVEL cate message key=value ..."; a line that is not a record is shown as it is after
// a "??" mark.
std::string TextLine(const _log::LogLine& line, const ViewOptions& opt) {
    std::string out;
    if (!line.bRecord) {
        out = opt.color ? "\x1b[35m??\x1b[0m " : "?? ";
        return out + Shown(line.strLine, opt) + "\n";
    }
    out = line.strLineTime.empty() ? std::string("-") : line.strLineTime;
    const _log::LogLineField* level = _log::LogLine::Find(line.vecHeader, "level");
    const std::string levelName = level != nullptr ? level->strValue : std::string("-");
    std::string shownLevel = Shown(levelName, opt);
    shownLevel.resize(std::max<size_t>(shownLevel.size(), 5), ' ');
    out.push_back(' ');
    const char* color = opt.color ? LevelColor(levelName) : nullptr;
    if (color != nullptr) out += color;
    out += shownLevel;
    if (color != nullptr) out += "\x1b[0m";
    const _log::LogLineField* cate = _log::LogLine::Find(line.vecTop, "cate");
    out.push_back(' ');
    out += cate != nullptr ? Shown(cate->strValue, opt) : std::string("-");
    out.push_back(' ');
    out += Shown(line.strMsg, opt);
    for (const _log::LogLineField& f : line.vecContext) AppendAttribute(&out, f, opt);
    for (const _log::LogLineField& f : line.vecTop) {
        if (&f != cate) AppendAttribute(&out, f, opt);
    }
    return out + "\n";
}

bool Contains(const std::string& hay, const std::string& needle) {
    return hay.find(needle) != std::string::npos;
}

// Time and text filters apply to every line; level and category only to records, so a damaged
// line is never hidden by them.
bool Passes(const _log::LogLine& line, const ViewOptions& opt) {
    if (!line.strLineTime.empty()) {
        if ((!opt.since.empty() && line.strLineTime < opt.since) ||
            (!opt.until.empty() && line.strLineTime > opt.until)) {
            return false;
        }
    }
    const std::string& text = line.bRecord ? line.strMsg : line.strLine;
    if (opt.hasGrep && !Contains(text, opt.grep) && !Contains(ToUtf8(text, false), opt.grep)) {
        return false;
    }
    if (!line.bRecord) return true;
    if (opt.hasLevel) {
        const _log::LogLineField* level = _log::LogLine::Find(line.vecHeader, "level");
        uint32_t n = 0;
        if (level == nullptr || !ParseLevel(level->strValue.c_str(), &n) || n < opt.minLevel) {
            return false;
        }
    }
    if (!opt.cates.empty()) {
        const _log::LogLineField* cate = _log::LogLine::Find(line.vecTop, "cate");
        if (cate == nullptr || opt.cates.count(cate->strValue) == 0) return false;
    }
    return true;
}

// "YYYY-MM-DD[ hh:mm[:ss]]" as the line time prints it, or a relative "-N" + s/m/h/d back from
// now; "" when the text is neither.
std::string TimeBound(const std::string& text) {
    if (text.size() >= 3 && text[0] == '-') {
        const std::string digits = text.substr(1, text.size() - 2);
        const char unit = text.back();
        const long long scale = unit == 's'   ? 1
                                : unit == 'm' ? 60
                                : unit == 'h' ? 3600
                                : unit == 'd' ? 86400
                                              : 0;
        if (scale == 0 || digits.size() > 9 ||
            digits.find_first_not_of("0123456789") != std::string::npos) {
            return std::string();
        }
        return _log::LineTimeText(platform::Time64() - std::stoll(digits) * scale);
    }
    int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
    char tail = 0;
    const int n =
        std::sscanf(text.c_str(), "%4d-%2d-%2d %2d:%2d:%2d%c", &y, &mo, &d, &h, &mi, &s, &tail);
    if ((n != 3 && n != 5 && n != 6) || y < 1000 || mo < 1 || mo > 12 || d < 1 || d > 31 ||
        h > 23 || mi > 59 || s > 60 || h < 0 || mi < 0 || s < 0) {
        return std::string();
    }
    char buf[80];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02d:%02d:%02d", y, mo, d, h, mi, s);
    return buf;
}

// Day files sort by the date in their name ("2026_11_22_x64.log"), other names after them.
using DayKey = std::tuple<int, int, int, int, std::string>;

DayKey DayOf(const std::string& name) {
    unsigned y = 0, m = 0, d = 0;
    int used = 0;
    if (std::sscanf(name.c_str(), "%u_%u_%u%n", &y, &m, &d, &used) == 3 &&
        name.compare(static_cast<size_t>(used), std::string::npos, "_x64.log") == 0) {
        return DayKey(0, static_cast<int>(y), static_cast<int>(m), static_cast<int>(d), name);
    }
    return DayKey(1, 0, 0, 0, name);
}

bool EndsWith(const std::string& s, const char* tail) {
    const size_t n = std::strlen(tail);
    return s.size() >= n && s.compare(s.size() - n, n, tail) == 0;
}

// The folder's "*_x64.log" files in date order; false with `why` when it cannot be listed.
bool DayFiles(const std::string& folder, std::vector<std::string>* files, std::string* why) {
    std::error_code ec;
    std::vector<std::pair<DayKey, std::string>> found;
    for (std::filesystem::directory_iterator it(folder, ec), end; !ec && it != end;
         it.increment(ec)) {
        const std::string name = it->path().filename().string();
        std::error_code typeEc;
        if (EndsWith(name, "_x64.log") && it->is_regular_file(typeEc)) {
            found.emplace_back(DayOf(name), it->path().generic_string());
        }
    }
    if (ec) {
        *why = folder + ": " + ec.message();
        return false;
    }
    std::sort(found.begin(), found.end());
    files->clear();
    for (auto& f : found) files->push_back(std::move(f.second));
    return true;
}

// The first day file of `folder` dated after `current` (any file when `current` is ""); false when
// there is none yet.
bool NextDayFile(const std::string& folder, const std::string& current, std::string* next) {
    std::vector<std::string> days;
    std::string why;
    if (!DayFiles(folder, &days, &why)) return false;
    const DayKey now = DayOf(std::filesystem::path(current).filename().string());
    for (const std::string& d : days) {
        const DayKey key = DayOf(std::filesystem::path(d).filename().string());
        if (current.empty() || (std::get<0>(now) == 0 && std::get<0>(key) == 0 && key > now)) {
            *next = d;
            return true;
        }
    }
    return false;
}

// Reads one file from an offset, line by line; what follows the last newline waits for the rest
// of its line unless `final`.
class LogFileReader {
public:
    explicit LogFileReader(std::string path) : m_path(std::move(path)) {}
    const std::string& Path() const { return m_path; }

    // Hands every new line to `emit` (false from it stops); false with `why` when the file cannot
    // be read.
    template <typename Emit>
    bool Read(bool final, std::string* why, Emit&& emit) {
        std::FILE* f = std::fopen(m_path.c_str(), "rb");
        if (f == nullptr) {
            *why = m_path + ": " + std::strerror(errno);
            return false;
        }
        // A file that shrank was started over (or replaced): read it again from the start.
        if (platform::Seek64(f, 0, SEEK_END) == 0 && platform::Tell64(f) < m_offset) {
            m_offset = 0;
            m_pending.clear();
        }
        platform::Seek64(f, m_offset, SEEK_SET);
        char buf[65536];
        size_t n = 0;
        bool go = true;
        while (go && (n = std::fread(buf, 1, sizeof buf, f)) > 0) {
            m_offset += static_cast<int64_t>(n);
            size_t start = 0;
            for (size_t i = 0; go && i < n; ++i) {
                if (buf[i] == '\n') {
                    m_pending.append(buf + start, i - start);
                    go = emit(m_pending);
                    m_pending.clear();
                    start = i + 1;
                }
            }
            if (go) m_pending.append(buf + start, n - start);
        }
        const bool failed = std::ferror(f) != 0;
        std::fclose(f);
        if (failed) {
            *why = m_path + ": read error";
            return false;
        }
        if (go && final && !m_pending.empty()) {
            emit(m_pending);
            m_pending.clear();
        }
        return true;
    }

private:
    std::string m_path;
    int64_t m_offset = 0;
    std::string m_pending;
};

class Viewer {
public:
    explicit Viewer(const ViewOptions& opt) : m_opt(opt) {}

    // False when printing failed (stdout gone) or the line budget is spent.
    bool Line(const std::string& text) {
        if (m_failed || Done()) return false;
        _log::ParseLogLine(text, &m_line);
        if (!Passes(m_line, m_opt)) return true;
        if (!WriteOut(m_opt.json ? JsonLine(m_line) : TextLine(m_line, m_opt))) {
            m_failed = true;
            return false;
        }
        ++m_printed;
        return !Done();
    }
    bool Done() const { return m_opt.max >= 0 && m_printed >= m_opt.max; }
    bool Failed() const { return m_failed; }

private:
    const ViewOptions& m_opt;
    _log::LogLine m_line;
    long long m_printed = 0;
    bool m_failed = false;
};

int ViewFail(const std::string& what) { return Fail("log", what); }

int RunLogView(int argc, char** argv) {
    ViewOptions opt;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        auto bad = [&](const std::string& why) { return UsageError("log", kLogUsage, why); };
        if (arg == "--level" && hasValue) {
            opt.hasLevel = true;
            if (!ParseLevel(argv[++i], &opt.minLevel)) {
                return bad(std::string(argv[i]) + ": unknown level (TRACE..FATAL or 0..5)");
            }
        } else if (arg == "--cate" && hasValue) {
            opt.cates.insert(argv[++i]);
        } else if ((arg == "--since" || arg == "--until") && hasValue) {
            const std::string bound = TimeBound(argv[++i]);
            if (bound.empty()) {
                return bad(arg + " " + argv[i] +
                           ": give \"YYYY-MM-DD hh:mm[:ss]\" (local) or -N with s, m, h or d");
            }
            (arg == "--since" ? opt.since : opt.until) = bound;
        } else if (arg == "--grep" && hasValue) {
            opt.hasGrep = true;
            opt.grep = argv[++i];
        } else if (arg == "--max" && hasValue) {
            char* end = nullptr;
            opt.max = std::strtoll(argv[++i], &end, 10);
            if (*argv[i] == '\0' || *end != '\0' || opt.max < 0) {
                return bad(std::string("--max ") + argv[i] + ": give a count of lines");
            }
        } else if (arg == "--follow") {
            opt.follow = true;
        } else if (arg == "--json") {
            opt.json = true;
        } else if (arg == "--no-color") {
            opt.color = false;
        } else if (arg == "--raw") {
            opt.raw = true;
        } else if (arg.compare(0, 2, "--") == 0) {
            return bad(arg + ": unknown option");
        } else {
            opt.inputs.push_back(arg);
        }
    }
    opt.color = opt.color && !opt.json && platform::IsTerminal(stdout) &&
                platform::EnableTerminalColor(stdout);
    if (opt.inputs.empty()) opt.inputs.push_back("./debug");

    // Every file to read, in order; the last input decides what --follow watches.
    std::vector<std::string> files;
    std::string followFolder;  // where later day files appear; "" to watch one file only
    for (const std::string& input : opt.inputs) {
        std::error_code ec;
        const std::filesystem::file_status st = std::filesystem::status(input, ec);
        if (st.type() == std::filesystem::file_type::directory) {
            std::vector<std::string> days;
            std::string why;
            if (!DayFiles(input, &days, &why)) return ViewFail(why);
            files.insert(files.end(), days.begin(), days.end());
            followFolder = input;
        } else {
            const std::string reason = UnreadableFileReason(input);
            if (!reason.empty()) return ViewFail(input + ": " + reason);
            files.push_back(input);
            const std::filesystem::path p(input);
            followFolder = std::get<0>(DayOf(p.filename().string())) == 0
                               ? (p.has_parent_path() ? p.parent_path().string() : ".")
                               : std::string();
        }
    }

    Viewer viewer(opt);
    auto emit = [&](const std::string& line) { return viewer.Line(line); };
    std::string why;
    // With --follow the last file is read by the watch below, which keeps its unfinished line.
    const size_t upfront = opt.follow && !files.empty() ? files.size() - 1 : files.size();
    for (size_t i = 0; i < upfront && !viewer.Done() && !viewer.Failed(); ++i) {
        LogFileReader reader(files[i]);
        if (!reader.Read(true, &why, emit)) return ViewFail(why);
    }
    if (opt.follow) {
        LogFileReader reader(files.empty() ? std::string() : files.back());
        while (!viewer.Done() && !viewer.Failed()) {
            if (!reader.Path().empty() && !reader.Read(false, &why, emit)) return ViewFail(why);
            if (viewer.Done() || viewer.Failed() || !FlushOut()) break;
            // At midnight the writer starts the next day's file: once a later one is there, this
            // one is finished and the watch moves on.
            std::string next;
            if (!followFolder.empty() && NextDayFile(followFolder, reader.Path(), &next)) {
                if (!reader.Path().empty() && !reader.Read(true, &why, emit)) return ViewFail(why);
                reader = LogFileReader(next);
                continue;
            }
            std::this_thread::sleep_for(kPollInterval);
        }
    }
    if (viewer.Failed()) return kExitFailure;
    return FlushOut() ? kExitOk : kExitFailure;
}

}  // namespace

int RunLog(int argc, char** argv) {
    if (WantsHelp(argc, argv) ||
        (argc > 2 && std::strcmp(argv[1], "view") == 0 &&
         (std::strcmp(argv[2], "--help") == 0 || std::strcmp(argv[2], "-h") == 0))) {
        return PrintUsage(kLogUsage);
    }
    if (argc > 1 && std::strcmp(argv[1], "view") == 0) {
        return RunLogView(argc - 1, argv + 1);
    }
    uint32_t level = _log::LOG_INFO;
    const char* cate = nullptr;
    const char* folder = nullptr;
    const char* message = nullptr;
    _log::LogAttributes attrs;
    bool noFile = false;
    for (int i = 1; i < argc; ++i) {
        const char* arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(arg, "--level") == 0 && hasValue) {
            if (!ParseLevel(argv[++i], &level)) {
                return UsageError("log", kLogUsage,
                                  std::string(argv[i]) + ": unknown level (TRACE..FATAL or 0..5)");
            }
        } else if (std::strcmp(arg, "--cate") == 0 && hasValue) {
            cate = argv[++i];
        } else if (std::strcmp(arg, "--folder") == 0 && hasValue) {
            folder = argv[++i];
        } else if (message == nullptr && std::strcmp(arg, "--") == 0 && hasValue) {
            message = argv[++i];
        } else if (message == nullptr && std::strncmp(arg, "--", 2) != 0) {
            message = arg;
        } else if (message != nullptr && std::strchr(arg, '=') != nullptr) {
            const char* eq = std::strchr(arg, '=');
            attrs.emplace_back(std::string(arg, eq), ParseValue(eq + 1));
            noFile = noFile || attrs.back().strKey == "__out__";
        } else {
            return UsageError("log", kLogUsage, std::string(arg) + ": unexpected argument");
        }
    }
    if (message == nullptr) {
        return UsageError("log", kLogUsage);
    }
    // The writer puts the folder below "./" whatever it is, so a rooted one would land elsewhere.
    if (folder != nullptr && (*folder == '\0' || std::filesystem::path(folder).has_root_path())) {
        return UsageError("log", kLogUsage,
                          std::string("--folder ") + folder +
                              ": give a folder below the current one (the log always goes there)");
    }
    if (cate != nullptr) {
        attrs.emplace_back("cate", _log::LogValue(cate));
    }
    _log::ILoggerFactory* factory = _log::GetLoggerFactory();
    factory->SetLogFolder(folder);
    auto* logger = dynamic_cast<_log::CLogger*>(factory->GetDefaultLogger());
    if (logger == nullptr) {
        return Fail("log", "the default logger is not the library's own");
    }
    const _log::LoggerConfig& config = logger->Writer()->Config();
    if (level < config.nMinLevel) {
        return Fail("log", std::string("level ") + _log::LevelName(level) +
                               " is below the minimum " + _log::LevelName(config.nMinLevel) +
                               ": nothing written");
    }
    if (noFile) {
        return Fail("log", "__out__ keeps the record out of the file: nothing written");
    }
    // The day's file as the writer will name it; its size shows whether the line went in.
    const std::string expected = DayFilePath(config.strFileSuffix);
    std::error_code ec;
    const uintmax_t before = std::filesystem::file_size(expected, ec);
    const uintmax_t sizeBefore = ec ? 0 : before;

    logger->Log(level, message, attrs);
    const std::string path = logger->Writer()->LastPath();
    if (path.empty()) {
        return Fail("log", "the record went to no file");
    }
    const uintmax_t after = std::filesystem::file_size(path, ec);
    if (ec || after <= (path == expected ? sizeBefore : 0)) {
        return Fail("log", path + ": cannot write: " + WriteFailureReason(path));
    }
    return WriteOut(path + "\n") && FlushOut() ? kExitOk : kExitFailure;
}

void DemoLogging(const DemoContext& ctx) {
    DemoHeading("logging");
    // The log folder is always below the current folder, so the demo logs from its scratch folder.
    std::error_code ec;
    const std::filesystem::path previous = std::filesystem::current_path(ec);
    if (ec || (std::filesystem::current_path(ctx.workDir, ec), ec)) {
        DemoFail("logging: cannot work in " + ctx.workDir + ": " + ec.message());
        return;
    }
    // A fixed zone (UTC+8) shows the pairing: "logtime" is UTC's wall clock with the zone's text,
    // the line time in front is local.
    const char* oldTz = std::getenv("TZ");
    const std::string savedTz = oldTz != nullptr ? oldTz : "";
    platform::SetEnv("TZ", "CST-8");
    platform::TzSet();
    std::printf("  zone UTC+8; records at INFO and above are written\n");

    _log::ILoggerFactory* factory = _log::GetLoggerFactory();
    PrintingCallback callback;
    factory->SetCallback(&callback);
    factory->SetLogFolder("demo-logs");
    factory->AddCategoryName("combat", "verbose");

    _log::ILogger* logger = factory->GetDefaultLogger();
    logger->Log(_log::LOG_INFO, "login ok", {{"uid", _log::LogValue(42)}});
    logger->Log(_log::LOG_WARN, "slow frame",
                {{"ms", _log::LogValue(48.5)},
                 {"_", _log::LogValue::Source("Frame.cpp", 120)},
                 {"vsync", _log::LogValue(true)}});
    // "\xb5\xc7\xc2\xbc" is GBK for "login" (登录): bytes pass through unescaped.
    logger->Log(_log::LOG_ERROR, "\xb5\xc7\xc2\xbc \"gate\"\tfailed",
                {{"code", _log::LogValue(-3)}});
    logger->Log(_log::LOG_DEBUG, "below the INFO minimum: dropped");
    logger->Log(_log::LOG_INFO, "combat is off until 'verbose' is enabled",
                {{"cate", _log::LogValue("combat")}});
    factory->EnableName("verbose");
    logger->Log(_log::LOG_INFO, "hit", {{"cate", _log::LogValue("combat")}, {"dmg", 17}});
    logger->Log(_log::LOG_INFO, "only to the callback", {{"__out__", _log::LogValue(true)}});
    logger->Log(_log::LOG_INFO, "only to the file", {{"__cb__", _log::LogValue(true)}});
    logger->Log(_log::LOG_INFO, "login ok", {{"uid", _log::LogValue(42)}});  // same second: once

    factory->SetCallback(nullptr);
    auto* concrete = dynamic_cast<_log::CLogger*>(logger);
    const std::string path = concrete->Writer()->LastPath();
    std::printf("  %s holds:\n", path.c_str());
    if (std::FILE* file = std::fopen(path.c_str(), "r")) {
        char line[1024];
        while (std::fgets(line, sizeof line, file) != nullptr) {
            std::printf("    %s", line);
        }
        std::fclose(file);
    } else {
        DemoFail("logging: " + path + ": no log file was written");
    }
    std::printf("  (the ERROR message starts with GBK bytes, written unchanged)\n");
    platform::SetEnv("TZ", oldTz != nullptr ? savedTz.c_str() : nullptr);
    platform::TzSet();
    std::filesystem::current_path(previous, ec);
}

}  // namespace pind::tool

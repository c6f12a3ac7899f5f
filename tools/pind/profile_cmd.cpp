// `pind profile`: runs a scripted game scene under the profiler and writes what it saw — a Chrome
// trace, an SVG of the overlay the game would draw, or the call graph out of a statistics report —
// and the profiler step of the demo.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Commands.h"
#include "ToolSupport.h"
#include "pind/client/PindClient.h"
#include "pind/files/PackFile.h"
#include "pind/platform/Clock.h"
#include "pind/platform/System.h"
#include "pind/platform/Window.h"
#include "pind/profile/ProfileObjects.h"
#include "pind/profile/Profiler.h"
#include "pind/time/PindTime.h"
#include "pind/xml/XmlDocument.h"

namespace pind::tool {
namespace {

const char kProfileUsage[] =
    "usage: pind profile trace [-o FILE]     run a scripted scene, write its Chrome trace\n"
    "                                         (default profile/trace.json)\n"
    "       pind profile overlay [-o FILE]   run the scene, write the overlay it draws as SVG\n"
    "                                         (default profile/overlay.svg)\n"
    "       pind profile dot REPORT [-o OUT] the last call graph of a statistics report, as SVG\n"
    "                                         when Graphviz's dot is installed, else as dot text\n"
    "Without -o, dot writes to standard output. Open a trace in chrome://tracing or Perfetto.";

// GBK characters of the report's labels and their UTF-8 forms, so that terminals, SVG and
// Graphviz can show them; any other byte above ASCII becomes '?'.
const char* const kLabelChars[][2] = {
    {"\xcc\xe5", "\xe4\xbd\x93"}, {"\xb9\xb2", "\xe5\x85\xb1"}, {"\xba\xaf", "\xe5\x87\xbd"},
    {"\xb7\xd6", "\xe5\x88\x86"}, {"\xcd\xbc", "\xe5\x9b\xbe"}, {"\xbe\xf9", "\xe5\x9d\x87"},
    {"\xd0\xcd", "\xe5\x9e\x8b"}, {"\xb4\xf3", "\xe5\xa4\xa7"}, {"\xc6\xbd", "\xe5\xb9\xb3"},
    {"\xce\xa2", "\xe5\xbe\xae"}, {"\xd7\xdc", "\xe6\x80\xbb"}, {"\xca\xfd", "\xe6\x95\xb0"},
    {"\xca\xb1", "\xe6\x97\xb6"}, {"\xd7\xee", "\xe6\x9c\x80"}, {"\xb4\xce", "\xe6\xac\xa1"},
    {"\xb1\xc8", "\xe6\xaf\x94"}, {"\xcf\xfb", "\xe6\xb6\x88"}, {"\xd3\xc3", "\xe7\x94\xa8"},
    {"\xb0\xd9", "\xe7\x99\xbe"}, {"\xc0\xe0", "\xe7\xb1\xbb"}, {"\xcd\xb3", "\xe7\xbb\x9f"},
    {"\xba\xc4", "\xe8\x80\x97"}, {"\xca\xd3", "\xe8\xa7\x86"}, {"\xbc\xc6", "\xe8\xae\xa1"},
    {"\xb5\xf7", "\xe8\xb0\x83"}, {"\xc8\xed", "\xe8\xbd\xaf"}, {"\xbc\xe4", "\xe9\x97\xb4"},
    {"\xd1\xc5", "\xe9\x9b\x85"}, {"\xba\xda", "\xe9\xbb\x91"},
};

std::string LabelsToUtf8(const std::string& gbk) {
    std::string out;
    for (size_t i = 0; i < gbk.size(); ++i) {
        const auto b = static_cast<unsigned char>(gbk[i]);
        if (b < 0x80) {
            out += gbk[i];
            continue;
        }
        const char* utf8 = nullptr;
        if (i + 1 < gbk.size()) {
            for (const auto& pair : kLabelChars) {
                if (gbk.compare(i, 2, pair[0]) == 0) {
                    utf8 = pair[1];
                    break;
                }
            }
        }
        if (utf8 != nullptr) {
            out += utf8;
            ++i;
        } else {
            out += '?';
        }
    }
    return out;
}

// The scene's clock: time moves only when the scene says its work took so long.
class SceneClock : public platform::ClockSource {
public:
    SceneClock() : m_unixMs(platform::UnixTimeMs()) {}
    void AdvanceUs(int64_t us) { m_us += us; }
    uint32_t TimeGetTime() const override { return static_cast<uint32_t>(1000 + m_us / 1000); }
    uint32_t GetTickCount() const override { return TimeGetTime(); }
    int64_t PerformanceCounter() const override { return m_us; }
    int64_t PerformanceFrequency() const override { return 1000000; }
    int32_t ProcessClock() const override { return static_cast<int32_t>(m_us / 1000); }
    int64_t UnixTimeMs() const override { return m_unixMs + m_us / 1000; }

private:
    int64_t m_us = 0;
    int64_t m_unixMs;
};

// The scene's host: reports go below `base`, drawing is recorded.
class SceneHost : public IPindClientNone {
public:
    struct Rect {
        int left, top, right, bottom;
        uint32_t argb;
    };
    struct Text {
        int x, y;
        uint32_t rgb;
        std::string text;
    };
    std::string base;
    std::vector<Rect> rects;
    std::vector<Text> texts;

    void TranslatePath(const char* path, std::string& translated) override {
        if (!base.empty() && path != nullptr) {
            translated = base + "/" + path;
        }
    }
    void CreateDir(const char* name) override {
        platform::MakeDir(base.empty() ? name : (base + "/" + name).c_str());
    }
    void FillRectangle(int l, int t, int r, int b, uint32_t argb) override {
        rects.push_back({l, t, r, b, argb});
    }
    void DrawString(int x, int y, uint32_t rgb, const char* text) override {
        texts.push_back({x, y, rgb, text != nullptr ? text : ""});
    }
    void GetDescription(char* buffer) override { std::snprintf(buffer, 256, "pind profile scene"); }
};

std::set<int> g_keys;
int16_t SceneKeys(int vk) { return g_keys.count(vk) != 0 ? static_cast<int16_t>(0x8000) : 0; }

constexpr int kCtrl = 17;
constexpr int kNumpad2 = 98;
constexpr int kNumpad7 = 103;

// Installs the scene's clock, host and keys and a fresh profiler; puts everything back after.
class Scene {
public:
    explicit Scene(const std::string& base) {
        m_host.base = base;
        m_previousClock = platform::SetClockSource(&m_clock);
        m_previousKeys = platform::SetKeyStateSource(SceneKeys);
        SetClient(&m_host);
        // The scene's server runs at UTC+8 on the machine's wall clock, for the report heading.
        CPindTime::Instance()->SyncServerTime(static_cast<uint64_t>(platform::UnixTimeMs() / 1000),
                                              -28800);
        ProfileRestart();
        ProfileSettings settings;
        settings.nProfile = 1;
        settings.nShowGraph = 1;
        ProfileConfigure(settings);
    }
    ~Scene() {
        ProfileRestart();
        SetClient(nullptr);
        platform::SetKeyStateSource(m_previousKeys);
        platform::SetClockSource(m_previousClock);
        g_keys.clear();
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    SceneHost& Host() { return m_host; }

    // One frame of a small game: input, world update, drawing; each part takes scripted time.
    void RunFrame(int frame) {
        m_seed = m_seed * 1103515245u + 12345u;
        const int64_t jitter = static_cast<int64_t>((m_seed >> 16) % 400);
        {
            PIND_PROFILE_SCOPE("CGame::Frame");
            Work(150);
            {
                PIND_PROFILE_SCOPE("CInput::Poll");
                Work(200);
            }
            {
                PIND_PROFILE_SCOPE("CWorld::Update");
                {
                    PIND_PROFILE_SCOPE("CPhysics::Step");
                    Work(1500 + jitter);
                }
                {
                    PIND_PROFILE_SCOPE("CAI::Think");
                    Work(frame % 50 == 0 ? 6000 : 800);  // a heavy decision now and then
                }
                ProfileAddClassifyTime(2, 2.3f);
            }
            {
                PIND_PROFILE_SCOPE("CScene::Draw");
                {
                    PIND_PROFILE_SCOPE("CTerrain::Draw");
                    Work(2000);
                }
                for (int unit = 0; unit < 3; ++unit) {
                    PIND_PROFILE_SCOPE("CUnit::Draw[3]");
                    Work(400);
                }
                {
                    PIND_PROFILE_SCOPE("CUI::Draw");
                    Work(600);
                }
                ProfileAddClassifyTime(1, 4.3f);
            }
        }
        m_clock.AdvanceUs(16667 - 7450 - jitter);  // the rest of a 60 Hz frame
        char written = 0;
        ProfileFrame(&written);
    }

private:
    void Work(int64_t us) { m_clock.AdvanceUs(us); }

    SceneClock m_clock;
    SceneHost m_host;
    const platform::ClockSource* m_previousClock = nullptr;
    platform::KeyStateSource m_previousKeys = nullptr;
    uint32_t m_seed = 7;
};

// A label as SVG text: entities encoded, and a tab (which SVG would draw as one blank) as two.
std::string XmlEscape(const std::string& text) {
    std::string out;
    for (const char c : xml::EncodeEntities(text)) {
        out += c == '\t' ? std::string("  ") : std::string(1, c);
    }
    return out;
}

std::string Colour(uint32_t rgb) {
    char text[8];
    std::snprintf(text, sizeof text, "#%06X", rgb & 0xFFFFFFu);
    return text;
}

std::string OverlaySvg(const SceneHost& host) {
    std::ostringstream svg;
    svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"1280\" height=\"960\" "
           "font-family=\"monospace\" font-size=\"13\">\n"
           "<rect width=\"1280\" height=\"960\" fill=\"#4A6B3A\"/>\n";
    for (const SceneHost::Rect& r : host.rects) {
        char opacity[16];
        std::snprintf(opacity, sizeof opacity, "%.3f", ((r.argb >> 24) & 0xFF) / 255.0);
        svg << "<rect x=\"" << r.left << "\" y=\"" << r.top << "\" width=\"" << r.right - r.left
            << "\" height=\"" << r.bottom - r.top << "\" fill=\"" << Colour(r.argb)
            << "\" fill-opacity=\"" << opacity << "\"/>\n";
    }
    for (const SceneHost::Text& t : host.texts) {
        // The host draws text with its top at y; SVG places the baseline there.
        svg << "<text x=\"" << t.x << "\" y=\"" << t.y + 14 << "\" fill=\"" << Colour(t.rgb)
            << "\" xml:space=\"preserve\">" << XmlEscape(LabelsToUtf8(t.text)) << "</text>\n";
    }
    svg << "</svg>\n";
    return svg.str();
}

// Writes `bytes` to `path` through a temporary file renamed over it; false when it cannot.
bool ReplaceFile(const std::string& path, const std::string& bytes) {
    const std::string temp = path + ".tmp";
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        if (!out || !out.write(bytes.data(), static_cast<std::streamsize>(bytes.size())) ||
            !out.flush()) {
            std::error_code ec;
            std::filesystem::remove(temp, ec);
            return false;
        }
    }
    std::error_code ec;
    std::filesystem::rename(temp, path, ec);
    if (ec) {
        std::filesystem::remove(temp, ec);
        return false;
    }
    return true;
}

// Parses "[-o FILE]" after the subcommand; false on anything else.
bool ParseOut(int argc, char** argv, int from, std::string* out) {
    for (int i = from; i < argc; ++i) {
        if (std::strcmp(argv[i], "-o") == 0 && i + 1 < argc && out->empty()) {
            *out = argv[++i];
        } else {
            return false;
        }
    }
    return true;
}

// The default output's folder is made on demand; a folder the user named must exist.
std::string DefaultOut(const char* name) {
    std::error_code ec;
    std::filesystem::create_directories("profile", ec);
    return std::string("profile/") + name;
}

int RunTrace(int argc, char** argv) {
    std::string out;
    if (!ParseOut(argc, argv, 2, &out)) {
        return UsageError("profile", kProfileUsage);
    }
    if (out.empty()) {
        out = DefaultOut("trace.json");
    }
    const std::string temp = out + ".tmp";
    bool written = false;
    {
        Scene scene("");
        for (int frame = 0; frame < 200; ++frame) {
            scene.RunFrame(frame);
        }
        written = ProfileWriteChromeTrace(temp.c_str());
    }
    std::error_code ec;
    if (written) {
        std::filesystem::rename(temp, out, ec);
    }
    if (!written || ec) {
        std::filesystem::remove(temp, ec);
        return Fail("profile", out + ": cannot write the trace");
    }
    return WriteOut(out + "\n") && FlushOut() ? kExitOk : kExitFailure;
}

int RunOverlay(int argc, char** argv) {
    std::string out;
    if (!ParseOut(argc, argv, 2, &out)) {
        return UsageError("profile", kProfileUsage);
    }
    if (out.empty()) {
        out = DefaultOut("overlay.svg");
    }
    std::string svg;
    {
        Scene scene("");
        for (int frame = 0; frame < 60; ++frame) {
            scene.RunFrame(frame);
        }
        // The last frame draws the rows; one more, after Ctrl+Numpad 2, the classification graph.
        SceneHost& host = scene.Host();
        host.rects.clear();
        host.texts.clear();
        scene.RunFrame(60);
        const auto rows = host.rects;
        const auto texts = host.texts;
        g_keys = {kCtrl, kNumpad2};
        scene.RunFrame(61);
        g_keys.clear();
        host.rects = rows;
        host.texts = texts;
        scene.RunFrame(62);
        svg = OverlaySvg(scene.Host());
    }
    if (!ReplaceFile(out, svg)) {
        return Fail("profile", out + ": cannot write the picture");
    }
    return WriteOut(out + "\n") && FlushOut() ? kExitOk : kExitFailure;
}

// The last dot graph of a statistics report, its labels in UTF-8; empty when there is none.
std::string LastDotGraph(const std::string& report) {
    const size_t start = report.rfind("digraph G {");
    if (start == std::string::npos) {
        return std::string();
    }
    const size_t end = report.find("\n}", start);
    if (end == std::string::npos) {
        return std::string();
    }
    return LabelsToUtf8(report.substr(start, end + 2 - start)) + "\n";
}

// Whether Graphviz's dot runs; its banner goes to a scratch file (the same redirection works in
// every shell std::system may use).
bool HaveGraphviz() {
    const std::filesystem::path scratch =
        std::filesystem::temp_directory_path() /
        ("pind-dot-probe-" + std::to_string(platform::CurrentProcessId()));
    const std::string command = "dot -V > \"" + scratch.generic_string() + "\" 2>&1";
    const bool found = std::system(command.c_str()) == 0;
    std::error_code ec;
    std::filesystem::remove(scratch, ec);
    return found;
}

// Renders dot text to an SVG file with Graphviz; false (with the reason) when dot fails.
bool RenderDot(const std::string& dotText, const std::string& svgPath, std::string* why) {
    for (const char c : svgPath) {
        if (c == '"' || c == '$' || c == '`' || c == '\\') {
            *why = "the output path holds a character the shell would read";
            return false;
        }
    }
    const std::string dotPath = svgPath + ".dot.tmp";
    const std::string temp = svgPath + ".tmp";
    if (!ReplaceFile(dotPath, dotText)) {
        *why = "cannot write next to the output";
        return false;
    }
    const std::string command =
        "dot -Tsvg -o \"" + temp + "\" \"" + dotPath + "\" 2> \"" + temp + ".err\"";
    const int status = std::system(command.c_str());
    std::error_code ec;
    std::filesystem::remove(dotPath, ec);
    if (status != 0) {
        std::ifstream err(temp + ".err");
        std::getline(err, *why);
        *why = "dot failed: " + *why;
        std::filesystem::remove(temp, ec);
        std::filesystem::remove(temp + ".err", ec);
        return false;
    }
    std::filesystem::remove(temp + ".err", ec);
    std::filesystem::rename(temp, svgPath, ec);
    if (ec) {
        *why = "cannot write";
        std::filesystem::remove(temp, ec);
        return false;
    }
    return true;
}

const char kInstallGraphviz[] =
    "pind: profile: Graphviz's dot was not found, so this is the graph's dot text; to get an "
    "SVG, install Graphviz (Debian/Ubuntu: apt-get install graphviz; Windows: winget install "
    "graphviz) and make sure `dot` is on PATH\n";

int RunDot(int argc, char** argv) {
    if (argc < 3 || argv[2][0] == '-') {
        return UsageError("profile", kProfileUsage, "dot needs a REPORT");
    }
    const std::string report = argv[2];
    std::string out;
    if (!ParseOut(argc, argv, 3, &out)) {
        return UsageError("profile", kProfileUsage);
    }
    std::ifstream in(report, std::ios::binary);
    std::ostringstream bytes;
    if (!in || !(bytes << in.rdbuf())) {
        return Fail("profile", report + ": cannot read");
    }
    const std::string graph = LastDotGraph(bytes.str());
    if (graph.empty()) {
        return Fail("profile", report + ": no call graph in it");
    }
    if (!HaveGraphviz()) {
        std::fputs(kInstallGraphviz, stderr);
        if (out.empty()) {
            return WriteOut(graph) && FlushOut() ? kExitOk : kExitFailure;
        }
        return ReplaceFile(out, graph) ? kExitOk : Fail("profile", out + ": cannot write");
    }
    std::string why;
    if (out.empty()) {
        const std::filesystem::path temp =
            std::filesystem::temp_directory_path() /
            ("pind-dot-" + std::to_string(platform::CurrentProcessId()) + ".svg");
        if (!RenderDot(graph, temp.generic_string(), &why)) {
            return Fail("profile", why);
        }
        std::ifstream svg(temp, std::ios::binary);
        std::ostringstream text;
        text << svg.rdbuf();
        std::error_code ec;
        std::filesystem::remove(temp, ec);
        return WriteOut(text.str()) && FlushOut() ? kExitOk : kExitFailure;
    }
    if (!RenderDot(graph, out, &why)) {
        return Fail("profile", out + ": " + why);
    }
    return kExitOk;
}

}  // namespace

int RunProfile(int argc, char** argv) {
    if (WantsHelp(argc, argv)) {
        return PrintUsage(kProfileUsage);
    }
    if (argc < 2) {
        return UsageError("profile", kProfileUsage);
    }
    const std::string sub = argv[1];
    if (sub == "trace") {
        return RunTrace(argc, argv);
    }
    if (sub == "overlay") {
        return RunOverlay(argc, argv);
    }
    if (sub == "dot") {
        return RunDot(argc, argv);
    }
    return UsageError("profile", kProfileUsage, "unknown subcommand " + sub);
}

void DemoProfile(const DemoContext& ctx) {
    DemoHeading("profile");
    const std::string folder = ctx.workDir + "/profile";
    {
        Scene scene(ctx.workDir);
        scene.Host().CreateDir("Profile");  // the object report's folder, as the client names it
        for (int i = 0; i < 40; ++i) {
            AddProfileObject("CUnit", 48);
        }
        AddProfileObject("CTerrainTile", 4096);
        for (int i = 0; i < 15; ++i) {
            RemoveProfileObject("CUnit");
        }
        for (int frame = 0; frame < 200; ++frame) {
            g_keys = frame == 150 ? std::set<int>{kCtrl, kNumpad7} : std::set<int>{};
            scene.RunFrame(frame);
        }
        g_keys.clear();
        ProfileWriteChromeTrace("profile/trace.json");
        PrintHeapInfo();
        PrintfProfileObjectCountInfo();
    }
    std::printf("200 frames of a scripted scene; Ctrl+Numpad 7 pressed at frame 150\n");
    std::ifstream in(folder + "/StatisticsFunction.log", std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    const std::string report = bytes.str();
    std::istringstream lines(LabelsToUtf8(report));
    std::string line;
    std::printf("report head (%s/StatisticsFunction.log):\n", folder.c_str());
    for (int n = 0; n < 9 && std::getline(lines, line); ++n) {
        std::printf("  %s\n", line.c_str());
    }
    for (const std::string name : {"profile/PrintHeapInfo.txt", "profile\\PrintHeapInfo.txt"}) {
        std::ifstream heap(ctx.workDir + "/" + name);
        std::string totals;
        while (std::getline(heap, line)) {
            if (line.rfind("HeapUseInfo", 0) == 0) {
                totals = line;
            }
        }
        if (!totals.empty()) {
            std::printf("heap report: %s\n", totals.c_str());
            break;
        }
    }
    std::ifstream objects(ctx.workDir + "/Profile/PrintfProfileObjectCountInfo.txt");
    std::printf("object counts:\n");
    while (std::getline(objects, line)) {
        if (line.rfind("==", 0) != 0) {
            std::printf("  %s\n", line.c_str());
        }
    }
    std::printf("Chrome trace (open in chrome://tracing or Perfetto): %s/trace.json\n",
                folder.c_str());
    const std::string graph = LastDotGraph(report);
    std::string why;
    if (graph.empty()) {
        std::printf("no call graph in the report\n");
    } else if (!HaveGraphviz()) {
        std::printf("call graph: install Graphviz (apt-get install graphviz) for an SVG\n");
    } else if (RenderDot(graph, folder + "/callgraph.svg", &why)) {
        std::printf("call graph: %s/callgraph.svg\n", folder.c_str());
    } else {
        std::printf("call graph: %s\n", why.c_str());
    }
    std::printf("(these files stay after the demo when it runs with --keep)\n");
}

}  // namespace pind::tool

// `pind curve`: the monotone cubic and the least-squares fit over points read from standard input,
// with an optional SVG picture; and the curves step of the demo. The output is scripted by other
// tools, so its shape is fixed: numbers with %.17g separated by one blank.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "Commands.h"
#include "ToolSupport.h"
#include "pind/curves/spline.h"
#include "pind/platform/System.h"

namespace pind::tool {
namespace {

const char kCurveUsage[] =
    "usage: pind curve pchip [--at X]... [--svg OUT.svg]\n"
    "       pind curve fit --terms N [--at X]... [--svg OUT.svg]\n"
    "Reads points from standard input, one a line: \"x y\" for pchip, \"x y [w]\" for fit (weight\n"
    "1 when left out); blank lines are skipped.\n"
    "  pchip          prints \"x y d\" per point, d the monotone cubic's derivative there\n"
    "  fit            prints \"b ...\", \"c ...\" and \"d ...\" (N numbers each): the "
    "least-squares\n"
    "                 polynomial's recurrence and fit coefficients\n"
    "  --terms N      polynomial terms of the fit (1 to 10000)\n"
    "  --at X         then prints \"X VALUE\", the curve at X (repeatable, kept in order)\n"
    "  --svg OUT.svg  also draws the points and the curve over the points' range\n"
    "Numbers are printed with %.17g. The routines' own messages and exits reach the caller as "
    "they\n"
    "are.";

constexpr int kMaxTerms = 10000;

// --- reading
// --------------------------------------------------------------------------------------

// A whole token as a double (strtod's forms, nan and inf included).
bool ParseNumber(const std::string& token, double* value) {
    if (token.empty()) {
        return false;
    }
    char* end = nullptr;
    *value = std::strtod(token.c_str(), &end);
    return end == token.c_str() + token.size();
}

std::vector<std::string> Tokens(const std::string& line) {
    std::vector<std::string> tokens;
    const char* blanks = " \t\r\v\f";
    size_t at = line.find_first_not_of(blanks);
    while (at != std::string::npos) {
        const size_t end = line.find_first_of(blanks, at);
        tokens.push_back(line.substr(at, end == std::string::npos ? end : end - at));
        at = end == std::string::npos ? end : line.find_first_not_of(blanks, end);
    }
    return tokens;
}

struct Points {
    std::vector<double> x, y, w;
};

// Reads "x y" lines (with `weights`, "x y [w]"). A line that is neither that nor blank is a usage
// error, a failed read a failure; either with its message on stderr.
int ReadPoints(std::FILE* in, bool weights, Points* points) {
    std::string text;
    char chunk[64 * 1024];
    size_t got = 0;
    while ((got = std::fread(chunk, 1, sizeof chunk, in)) > 0) {
        text.append(chunk, got);
    }
    if (std::ferror(in)) {
        return Fail("curve", "standard input: read failed");
    }
    size_t lineNo = 0;
    for (size_t start = 0; start < text.size();) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) {
            end = text.size();
        }
        ++lineNo;
        const std::vector<std::string> tokens = Tokens(text.substr(start, end - start));
        start = end + 1;
        if (tokens.empty()) {
            continue;
        }
        double v[3] = {0.0, 0.0, 1.0};
        const bool countOk = tokens.size() == 2 || (weights && tokens.size() == 3);
        for (size_t i = 0; countOk && i < tokens.size(); ++i) {
            if (!ParseNumber(tokens[i], &v[i])) {
                std::fprintf(stderr, "pind: curve: line %zu: not a number: %s\n", lineNo,
                             tokens[i].c_str());
                return kExitUsage;
            }
        }
        if (!countOk) {
            std::fprintf(stderr, "pind: curve: line %zu: expected \"%s\"\n", lineNo,
                         weights ? "x y [w]" : "x y");
            return kExitUsage;
        }
        if (points->x.size() >= static_cast<size_t>(std::numeric_limits<int>::max())) {
            std::fprintf(stderr, "pind: curve: line %zu: too many points\n", lineNo);
            return kExitFailure;
        }
        points->x.push_back(v[0]);
        points->y.push_back(v[1]);
        points->w.push_back(v[2]);
    }
    return kExitOk;
}

// --- writing
// --------------------------------------------------------------------------------------

// Collects stdout text and hands it over in large pieces.
class Output {
public:
    void Number(double v) {
        char cell[40];
        std::snprintf(cell, sizeof cell, "%.17g", v);
        m_text += cell;
    }
    void Text(const char* s) { m_text += s; }
    bool EndLine() {
        m_text += '\n';
        if (m_text.size() < 256 * 1024) {
            return true;
        }
        const bool ok = WriteOut(m_text);
        m_text.clear();
        return ok;
    }
    bool Finish() { return WriteOut(m_text) && FlushOut(); }

private:
    std::string m_text;
};

// --- the picture
// ----------------------------------------------------------------------------------

struct Series {
    std::string label;
    const char* color;
    std::vector<double> x, y;
};

struct Picture {
    std::string title;
    std::vector<double> px, py;  // the data points
    std::vector<Series> curves;  // sampled over the data's x range
    std::vector<double> ax, ay;  // the --at points
};

std::string Num(const char* format, double v) {
    char cell[48];
    std::snprintf(cell, sizeof cell, format, v);
    return cell;
}

// The finite range of the values; a single value or none gets a unit-wide range around it.
void Range(const std::vector<const std::vector<double>*>& sets, double* lo, double* hi) {
    *lo = std::numeric_limits<double>::infinity();
    *hi = -*lo;
    for (const std::vector<double>* set : sets) {
        for (double v : *set) {
            if (std::isfinite(v)) {
                *lo = std::min(*lo, v);
                *hi = std::max(*hi, v);
            }
        }
    }
    if (*lo > *hi) {
        *lo = 0.0;
        *hi = 1.0;
    } else if (*lo == *hi) {
        *lo -= 0.5 + std::fabs(*lo) * 0.05;
        *hi += 0.5 + std::fabs(*hi) * 0.05;
    }
}

// Even x samples over [lo, hi]; the data's own x too when there are few, so corners show.
std::vector<double> Samples(double lo, double hi, const std::vector<double>& dataX) {
    std::vector<double> xs;
    const int count = 1024;
    for (int i = 0; i <= count; ++i) {
        // Weighted ends rather than lo + (hi - lo) t, which overflows on ranges near DBL_MAX.
        const double t = static_cast<double>(i) / count;
        xs.push_back(i == count ? hi : lo * (1.0 - t) + hi * t);
    }
    if (dataX.size() <= 2000) {
        for (double v : dataX) {
            if (std::isfinite(v)) {
                xs.push_back(v);
            }
        }
    }
    std::sort(xs.begin(), xs.end());
    return xs;
}

std::string Svg(const Picture& pic) {
    const double width = 640, height = 420, left = 80, right = 24, top = 40, bottom = 56;
    double x0, x1, y0, y1;
    Range({&pic.px}, &x0, &x1);
    std::vector<double> inRangeY;
    size_t outside = 0;
    for (size_t i = 0; i < pic.ax.size(); ++i) {
        if (pic.ax[i] >= x0 && pic.ax[i] <= x1) {
            inRangeY.push_back(pic.ay[i]);
        } else {
            ++outside;
        }
    }
    std::vector<const std::vector<double>*> ys{&pic.py, &inRangeY};
    for (const Series& s : pic.curves) {
        ys.push_back(&s.y);
    }
    Range(ys, &y0, &y1);
    // The ranges' ends sit a little inside the axes, so that marks there stay whole. Halves
    // first, so that ranges near the limits of double do not overflow.
    const double pad = 10;
    auto sx = [&](double v) {
        return left + pad + (v / 2 - x0 / 2) / (x1 / 2 - x0 / 2) * (width - left - right - 2 * pad);
    };
    auto sy = [&](double v) {
        return height - bottom - pad -
               (v / 2 - y0 / 2) / (y1 / 2 - y0 / 2) * (height - top - bottom - 2 * pad);
    };
    auto at = [](double v) { return Num("%.2f", v); };

    std::string svg =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"640\" height=\"420\" "
        "viewBox=\"0 0 640 420\" font-family=\"sans-serif\" font-size=\"12\">\n";
    svg += "<title>" + pic.title + "</title>\n";
    svg += "<rect width=\"640\" height=\"420\" fill=\"white\"/>\n";
    svg += "<text x=\"320\" y=\"24\" text-anchor=\"middle\" font-size=\"14\">" + pic.title +
           "</text>\n";
    // Axes, with ticks and labels at both ends of each range.
    const std::string bx = at(left), ex = at(width - right), by = at(height - bottom), ey = at(top);
    svg += "<g stroke=\"black\"><line x1=\"" + bx + "\" y1=\"" + by + "\" x2=\"" + ex + "\" y2=\"" +
           by + "\"/><line x1=\"" + bx + "\" y1=\"" + by + "\" x2=\"" + bx + "\" y2=\"" + ey +
           "\"/>";
    for (double v : {x0, x1}) {
        svg += "<line x1=\"" + at(sx(v)) + "\" y1=\"" + by + "\" x2=\"" + at(sx(v)) + "\" y2=\"" +
               at(height - bottom + 5) + "\"/>";
    }
    for (double v : {y0, y1}) {
        svg += "<line x1=\"" + bx + "\" y1=\"" + at(sy(v)) + "\" x2=\"" + at(left - 5) +
               "\" y2=\"" + at(sy(v)) + "\"/>";
    }
    svg += "</g>\n";
    for (double v : {x0, x1}) {
        svg += "<text x=\"" + at(sx(v)) + "\" y=\"" + at(height - bottom + 18) +
               "\" text-anchor=\"middle\">" + Num("%.6g", v) + "</text>\n";
    }
    for (double v : {y0, y1}) {
        svg += "<text x=\"" + at(left - 8) + "\" y=\"" + at(sy(v) + 4) + "\" text-anchor=\"end\">" +
               Num("%.6g", v) + "</text>\n";
    }
    svg += "<text x=\"" + at((left + width - right) / 2) + "\" y=\"" + at(height - 16) +
           "\" text-anchor=\"middle\">x</text>\n";
    svg += "<text x=\"16\" y=\"" + at((top + height - bottom) / 2) +
           "\" text-anchor=\"middle\">y</text>\n";
    svg += "<clipPath id=\"plot\"><rect x=\"" + bx + "\" y=\"" + ey + "\" width=\"" +
           at(width - left - right) + "\" height=\"" + at(height - top - bottom) +
           "\"/></clipPath>\n<g clip-path=\"url(#plot)\">\n";
    // Curves, broken where a value is not finite.
    for (const Series& s : pic.curves) {
        std::string run;
        auto flush = [&]() {
            if (!run.empty()) {
                svg += "<polyline fill=\"none\" stroke=\"" + std::string(s.color) +
                       "\" stroke-width=\"1.5\" points=\"" + run + "\"/>\n";
                run.clear();
            }
        };
        for (size_t i = 0; i < s.x.size(); ++i) {
            if (!std::isfinite(s.x[i]) || !std::isfinite(s.y[i])) {
                flush();
                continue;
            }
            run += (run.empty() ? "" : " ") + at(sx(s.x[i])) + "," + at(sy(s.y[i]));
        }
        flush();
    }
    // Data points, thinned to a few thousand marks.
    const size_t stride = pic.px.size() / 5000 + 1;
    svg += "<g fill=\"black\">\n";
    for (size_t i = 0; i < pic.px.size(); i += stride) {
        if (std::isfinite(pic.px[i]) && std::isfinite(pic.py[i])) {
            svg += "<circle cx=\"" + at(sx(pic.px[i])) + "\" cy=\"" + at(sy(pic.py[i])) +
                   "\" r=\"2.5\"/>\n";
        }
    }
    svg += "</g>\n<g fill=\"none\" stroke=\"crimson\" stroke-width=\"1.5\">\n";
    for (size_t i = 0; i < pic.ax.size(); ++i) {
        if (pic.ax[i] >= x0 && pic.ax[i] <= x1 && std::isfinite(pic.ay[i])) {
            svg += "<circle cx=\"" + at(sx(pic.ax[i])) + "\" cy=\"" + at(sy(pic.ay[i])) +
                   "\" r=\"5\"/>\n";
        }
    }
    svg += "</g>\n</g>\n";
    // Legend and notes along the bottom.
    std::string legend = "points: black";
    for (const Series& s : pic.curves) {
        legend += "; " + s.label + ": " + s.color;
    }
    if (!pic.ax.empty()) {
        legend += "; --at: crimson rings";
    }
    if (outside != 0) {
        legend += "; " + std::to_string(outside) + " --at outside the plot";
    }
    if (stride > 1) {
        legend += "; every " + std::to_string(stride) + "th point shown";
    }
    svg += "<text x=\"" + bx + "\" y=\"" + at(height - 2) + "\" font-size=\"10\">" + legend +
           "</text>\n</svg>\n";
    return svg;
}

// Writes the picture beside `path` and renames it into place.
bool SaveSvg(const std::string& path, const Picture& pic) {
    const std::string text = Svg(pic);
    const std::string temp = path + ".tmp" + std::to_string(platform::CurrentProcessId());
    std::FILE* f = std::fopen(temp.c_str(), "wb");
    if (f == nullptr) {
        Fail("curve", path + ": cannot write");
        return false;
    }
    const bool written = std::fwrite(text.data(), 1, text.size(), f) == text.size();
    std::error_code ec;
    if (std::fclose(f) != 0 || !written) {
        std::filesystem::remove(temp, ec);
        Fail("curve", path + ": cannot write");
        return false;
    }
    std::filesystem::rename(temp, path, ec);
    if (ec) {
        std::filesystem::remove(temp, ec);
        Fail("curve", path + ": cannot replace (" + ec.message() + ")");
        return false;
    }
    return true;
}

// The monotone cubic sampled over the data's range, for the picture.
Series PchipSeries(const Points& p, const std::vector<double>& d) {
    Series s{"monotone cubic", "steelblue", {}, {}};
    double lo, hi;
    Range({&p.x}, &lo, &hi);
    s.x = Samples(lo, hi, p.x);
    s.y.resize(s.x.size());
    spline_pchip_val(static_cast<int>(p.x.size()), p.x.data(), p.y.data(), d.data(),
                     static_cast<int>(s.x.size()), s.x.data(), s.y.data());
    return s;
}

Series FitSeries(const Points& p, int terms, const std::vector<double>& b,
                 const std::vector<double>& c, const std::vector<double>& d) {
    Series s{"least squares, " + std::to_string(terms) + " terms", "seagreen", {}, {}};
    double lo, hi;
    Range({&p.x}, &lo, &hi);
    s.x = Samples(lo, hi, p.x);
    for (double v : s.x) {
        s.y.push_back(least_val(terms, b.data(), c.data(), d.data(), v));
    }
    return s;
}

struct Options {
    bool fit = false;
    int terms = 0;
    std::vector<double> at;
    std::string svg;
};

int ParseOptions(int argc, char** argv, Options* o) {
    if (argc < 2) {
        return UsageError("curve", kCurveUsage);
    }
    const std::string mode = argv[1];
    if (mode != "pchip" && mode != "fit") {
        return UsageError("curve", kCurveUsage, "unknown mode " + mode);
    }
    o->fit = mode == "fit";
    bool svgSeen = false;
    for (int i = 2; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--at" && hasValue) {
            double v = 0.0;
            if (!ParseNumber(argv[++i], &v)) {
                return UsageError("curve", kCurveUsage,
                                  std::string("--at: not a number: ") + argv[i]);
            }
            o->at.push_back(v);
        } else if (arg == "--svg" && hasValue && !svgSeen && argv[i + 1][0] != '\0') {
            o->svg = argv[++i];
            svgSeen = true;
        } else if (arg == "--terms" && hasValue && o->fit && o->terms == 0) {
            char* end = nullptr;
            const long n = std::strtol(argv[++i], &end, 10);
            if (*argv[i] == '\0' || *end != '\0' || n < 1 || n > kMaxTerms) {
                return UsageError("curve", kCurveUsage,
                                  std::string("--terms: not a count from 1 to 10000: ") + argv[i]);
            }
            o->terms = static_cast<int>(n);
        } else {
            return UsageError("curve", kCurveUsage, "unexpected argument " + arg);
        }
    }
    if (o->fit && o->terms == 0) {
        return UsageError("curve", kCurveUsage, "fit needs --terms N");
    }
    return kExitOk;
}

}  // namespace

int RunCurve(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            return PrintUsage(kCurveUsage);
        }
    }
    Options o;
    if (const int status = ParseOptions(argc, argv, &o); status != kExitOk) {
        return status;
    }
    Points p;
    if (const int status = ReadPoints(stdin, o.fit, &p); status != kExitOk) {
        return status;
    }
    const int n = static_cast<int>(p.x.size());
    const int ne = static_cast<int>(o.at.size());
    std::vector<double> atValues(o.at.size());
    Output out;
    Picture pic;
    bool ok = true;
    if (!o.fit) {
        std::vector<double> d(p.x.size());
        spline_pchip_set(n, p.x.data(), p.y.data(), d.data());
        for (int i = 0; i < n && ok; ++i) {
            out.Number(p.x[i]);
            out.Text(" ");
            out.Number(p.y[i]);
            out.Text(" ");
            out.Number(d[i]);
            ok = out.EndLine();
        }
        if (ne > 0) {
            spline_pchip_val(n, p.x.data(), p.y.data(), d.data(), ne, o.at.data(), atValues.data());
        }
        if (!o.svg.empty()) {
            pic.title = "pind curve pchip: " + std::to_string(n) + " points";
            pic.curves.push_back(PchipSeries(p, d));
        }
    } else {
        std::vector<double> b(o.terms, 0.0), c(o.terms, 0.0), d(o.terms, 0.0);
        least_set(n, p.x.data(), p.y.data(), p.w.data(), o.terms, b.data(), c.data(), d.data());
        const std::pair<const char*, const std::vector<double>*> rows[] = {
            {"b", &b}, {"c", &c}, {"d", &d}};
        for (const auto& [name, values] : rows) {
            out.Text(name);
            for (double v : *values) {
                out.Text(" ");
                out.Number(v);
            }
            ok = ok && out.EndLine();
        }
        for (int i = 0; i < ne; ++i) {
            atValues[i] = least_val(o.terms, b.data(), c.data(), d.data(), o.at[i]);
        }
        if (!o.svg.empty()) {
            pic.title = "pind curve fit: " + std::to_string(n) + " points, " +
                        std::to_string(o.terms) + " terms";
            pic.curves.push_back(FitSeries(p, o.terms, b, c, d));
        }
    }
    for (int i = 0; i < ne && ok; ++i) {
        out.Number(o.at[i]);
        out.Text(" ");
        out.Number(atValues[i]);
        ok = out.EndLine();
    }
    if (!ok || !out.Finish()) {
        return kExitFailure;
    }
    if (!o.svg.empty()) {
        pic.px = p.x;
        pic.py = p.y;
        pic.ax = o.at;
        pic.ay = atValues;
        if (!SaveSvg(o.svg, pic)) {
            return kExitFailure;
        }
    }
    return kExitOk;
}

void DemoCurves(const DemoContext& ctx) {
    DemoHeading("curves");
    const std::string path = ctx.dataDir + "/curves/falloff.txt";
    std::FILE* in = std::fopen(path.c_str(), "rb");
    Points p;
    const bool read = in != nullptr && ReadPoints(in, /*weights=*/true, &p) == kExitOk;
    if (in != nullptr) {
        std::fclose(in);
    }
    if (!read || p.x.size() < 4) {
        std::printf("  pind: demo: %s: cannot read four points or more\n", path.c_str());
        return;
    }
    const int n = static_cast<int>(p.x.size());
    std::printf("  %s: %d points (distance, damage share, weight)\n", path.c_str(), n);

    std::vector<double> d(p.x.size());
    spline_pchip_set(n, p.x.data(), p.y.data(), d.data());
    const int terms = 4;
    std::vector<double> b(terms), c(terms), e(terms);
    least_set(n, p.x.data(), p.y.data(), p.w.data(), terms, b.data(), c.data(), e.data());

    const std::vector<double> at{p.x[0] - 2.0, 2.5, 12.5, 27.0, p.x[n - 1] + 5.0};
    std::vector<double> cubic(at.size());
    spline_pchip_val(n, p.x.data(), p.y.data(), d.data(), static_cast<int>(at.size()), at.data(),
                     cubic.data());
    std::printf("  %10s %16s %22s\n", "x", "monotone cubic", "least squares (4 terms)");
    for (size_t i = 0; i < at.size(); ++i) {
        std::printf("  %10g %16.6f %22.6f%s\n", at[i], cubic[i],
                    least_val(terms, b.data(), c.data(), e.data(), at[i]),
                    at[i] < p.x[0] || at[i] > p.x[n - 1] ? "  (outside the data)" : "");
    }
    std::printf("  derivatives at the data points:");
    for (double v : d) {
        std::printf(" %.4g", v);
    }
    std::printf(
        "\n  the cubic stays within each pair of neighbouring values; the polynomial need "
        "not\n");

    const Vec3f xs{0.0f, 1.0f, 2.0f}, ys{1.0f, 3.0f, 2.0f};
    std::printf("  parabola through (0,1) (1,3) (2,2) at 1.5: %g\n", ParabolaValue3(xs, ys, 1.5f));
    const Vec3f q0{0, 0, 0}, q1{0, 10, 0}, q2{10, 10, 0}, q3{10, 0, 0};
    std::printf("  Bezier (0,0,0) (0,10,0) (10,10,0) (10,0,0): middle (%g, %g), length %.6g\n",
                BezierPoint(q0, q1, q2, q3, 0.5f).x, BezierPoint(q0, q1, q2, q3, 0.5f).y,
                BezierLength(q0, q1, q2, q3));

    Picture pic;
    pic.title = "demo: monotone cubic and least squares";
    pic.px = p.x;
    pic.py = p.y;
    pic.curves.push_back(PchipSeries(p, d));
    pic.curves.push_back(FitSeries(p, terms, b, c, e));
    pic.ax = {2.5, 12.5, 27.0};
    pic.ay = {cubic[1], cubic[2], cubic[3]};
    const std::string svg = ctx.workDir + "/curves.svg";
    if (SaveSvg(svg, pic)) {
        std::printf("  picture written to %s (kept after the demo with --keep)\n", svg.c_str());
    }
}

}  // namespace pind::tool

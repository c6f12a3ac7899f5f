// The statistics report (Ctrl+Numpad 7), the overlay's row text and the slow-frame line. Headings
// are GBK bytes, written as escapes with the readable text beside them.
#include <fmt/format.h>

#include <cinttypes>
#include <cstring>
#include <string>
#include <vector>

#include "pind/client/PindClient.h"
#include "pind/files/PackFile.h"
#include "pind/time/TimeText.h"
#include "profile/ProfilerState.h"

namespace pind::detail {
namespace {

// "================================调用视图消耗统计(Time:%s)====...\n"
constexpr char kTreeHeading[] =
    "================================"
    "\xb5\xf7\xd3\xc3\xca\xd3\xcd\xbc\xcf\xfb\xba\xc4\xcd\xb3\xbc\xc6"
    "(Time:%s)===================================================================================="
    "\n";
// "================================函数总体消耗统计====...\n"
constexpr char kTableHeading[] =
    "================================"
    "\xba\xaf\xca\xfd\xd7\xdc\xcc\xe5\xcf\xfb\xba\xc4\xcd\xb3\xbc\xc6"
    "====================================================================================\n";
// "================================函数调用Dot图====...\n"
constexpr char kDotHeading[] =
    "================================\xba\xaf\xca\xfd\xb5\xf7\xd3\xc3"
    "Dot\xcd\xbc"
    "====================================================================================\n";
// "=================================类型消耗时间====...\n"
constexpr char kClassifyHeading[] =
    "=================================\xc0\xe0\xd0\xcd\xcf\xfb\xba\xc4\xca\xb1\xbc\xe4"
    "======================================================================================\n";
// "\tedge [fontname=\"微软雅黑\"];\n" and the node line with the same font.
constexpr char kDotEdgeFont[] = "\tedge [fontname=\"\xce\xa2\xc8\xed\xd1\xc5\xba\xda\"];\n";
constexpr char kDotNodeFont[] =
    "\tnode [fontname=\"\xce\xa2\xc8\xed\xd1\xc5\xba\xda\" size=\"20,20\"];\n";

// "{:<36}(消耗时间:{:<2.4f}ms 百分比:{:.2f}% 调用次数:{} )"
constexpr char kNodePattern[] =
    "{:<36}(\xcf\xfb\xba\xc4\xca\xb1\xbc\xe4:{:<2.4f}ms \xb0\xd9\xb7\xd6\xb1\xc8:{:.2f}% "
    "\xb5\xf7\xd3\xc3\xb4\xce\xca\xfd:{} )";
// "{:3d}--[{:<48}]\t--消耗时间:\t{:<2.4f}ms\t\t调用次数:{:<8d}\t平均时间:{:2.4f}ms
// 最大消耗:{:<2.4f}ms
//  总共消耗:\t{:<2.4f}ms\t\t总共调用:{:<8d}"
constexpr char kRowPattern[] =
    "{:3d}--[{:<48}]\t--\xcf\xfb\xba\xc4\xca\xb1\xbc\xe4:\t{:<2.4f}ms\t\t"
    "\xb5\xf7\xd3\xc3\xb4\xce\xca\xfd:{:<8d}\t\xc6\xbd\xbe\xf9\xca\xb1\xbc\xe4:{:2.4f}ms  "
    "\xd7\xee\xb4\xf3\xcf\xfb\xba\xc4:{:<2.4f}ms  \xd7\xdc\xb9\xb2\xcf\xfb\xba\xc4:\t{:<2.4f}ms\t\t"
    "\xd7\xdc\xb9\xb2\xb5\xf7\xd3\xc3:{:<8d}";
// "{:2d}--[{:<48}]\t--消耗时间:\t{:<2.4f}ms\t\t调用次数:{:<8d}\t平均时间:{:2.4f}ms
// 最大消耗:{:<2.4f}ms"
constexpr char kOverlayPattern[] =
    "{:2d}--[{:<48}]\t--\xcf\xfb\xba\xc4\xca\xb1\xbc\xe4:\t{:<2.4f}ms\t\t"
    "\xb5\xf7\xd3\xc3\xb4\xce\xca\xfd:{:<8d}\t\xc6\xbd\xbe\xf9\xca\xb1\xbc\xe4:{:2.4f}ms  "
    "\xd7\xee\xb4\xf3\xcf\xfb\xba\xc4:{:<2.4f}ms";

constexpr int kClosingWidth = 133;

// {fmt} measures width in code points, but names are GBK bytes: pad by bytes beforehand so the
// columns line up as the game's code page shows them.
std::string PadBytes(const std::string& text, size_t width) {
    std::string padded = text;
    if (padded.size() < width) {
        padded.append(width - padded.size(), ' ');
    }
    return padded;
}

float Average(const ProfileSection& s) {
    return s.uCount != 0 ? s.fTime / static_cast<float>(s.uCount) : 0.0f;
}

std::string DotName(std::string name) {
    for (char& c : name) {
        if (c == ':' || c == '[' || c == ']') {
            c = '_';
        }
    }
    return name;
}

void WriteTree(CPackFile* file, const ProfileNode& node, size_t depth) {
    const std::string text = fmt::format(fmt::runtime(kNodePattern), PadBytes(node.strName, 36),
                                         node.fTime, node.fShare * 100.0f, node.uCount);
    PackFPrintf(file, "%s%s\n", std::string(depth * 10, ' ').c_str(), text.c_str());
    for (const auto& child : node.children) {
        WriteTree(file, *child, depth + 1);
    }
}

void WriteEdges(CPackFile* file, const ProfileNode& node) {
    const std::string parent = DotName(node.strName);
    for (const auto& child : node.children) {
        PackFPrintf(file, "\t%s -> %s\n", parent.c_str(), DotName(child->strName).c_str());
        WriteEdges(file, *child);
    }
}

}  // namespace

std::string OverlayRowText(int nRow, const ProfileSection& s) {
    return fmt::format(fmt::runtime(kOverlayPattern), nRow, PadBytes(s.strName, 48), s.fTime,
                       s.uCount, Average(s), s.fMax);
}

void WriteStatisticsReport(Profiler& p, CPackFile* file) {
    char description[256] = {};
    GetClient()->GetDescription(description);
    description[sizeof description - 1] = '\0';
    PackFPrintf(file, "%s\n", description);
    PackFPrintf(file, kTreeHeading, ServerTimeText(4));

    // The tree belongs to the main thread, which is the one writing; the tables need the lock.
    if (p.root) {
        for (const auto& child : p.root->children) {
            child->fShare = p.root->fTime != 0 ? child->fTime / p.root->fTime : 0.0f;
        }
        WriteTree(file, *p.root, 0);
    }
    PackFPrintf(file, "%s", kTableHeading);
    {
        platform::CriticalSectionGuard lock(p.cs);
        for (size_t i = 0; i < p.displayList.size(); ++i) {
            const auto it = p.sections.find(p.displayList[i]);
            if (it == p.sections.end()) {
                continue;
            }
            const ProfileSection& s = it->second;
            const std::string row = fmt::format(fmt::runtime(kRowPattern), static_cast<int>(i) + 1,
                                                PadBytes(s.strName, 48), s.fTime, s.uCount,
                                                Average(s), s.fMax, s.fTotalTime, s.uTotalCount);
            PackFPrintf(file, "%s\n", row.c_str());
        }
    }
    PackFPrintf(file, "%s", kDotHeading);
    if (p.root) {
        PackFPrintf(file, "digraph G {\n");
        PackFPrintf(file, "%s", kDotEdgeFont);
        PackFPrintf(file, "%s", kDotNodeFont);
        WriteEdges(file, *p.root);
        PackFPrintf(file, "}");
    }
    PackFPrintf(file, "%s", kClassifyHeading);
    {
        platform::CriticalSectionGuard lock(p.cs);
        for (const auto& [id, record] : p.classify) {
            PackFPrintf(file, "ClassifyTime[%d] = %0.2f\n", id, static_cast<double>(record.fTime));
        }
    }
    PackFPrintf(file, "%s\n", std::string(kClosingWidth, '=').c_str());
}

void WriteProcessTimes(int64_t nUserMs, int64_t nKernelMs) {
    GetClient()->CreateDir("profile");
    CPackFile* file = PackFOpen("profile/StatisticsFunction.log", "a+");
    if (file == nullptr) {
        return;
    }
    PackFPrintf(
        file, "ProcessTimes        UserTimes = %" PRId64 "ms,       KernelTimes = %" PRId64 "ms\n",
        nUserMs, nKernelMs);
    PackFClose(file);
}

}  // namespace pind::detail

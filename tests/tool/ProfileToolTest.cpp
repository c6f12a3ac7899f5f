// `pind profile`: the scripted scene's trace and overlay files, the call graph out of a report with
// and without Graphviz, and the failures when nothing can be written.
#include <gtest/gtest.h>

#include <string>

#include "profile/TraceJson.h"
#include "support/TempDir.h"
#include "tool/RunTool.h"

namespace pind::test {
namespace {

// The tail of a statistics report: its graph, then the next heading.
const char kReport[] =
    "old run\n"
    "digraph G {\n\tRoot -> Old\n}=====\n"
    "digraph G {\n"
    "\tedge [fontname=\"\xce\xa2\xc8\xed\xd1\xc5\xba\xda\"];\n"
    "\tnode [fontname=\"\xce\xa2\xc8\xed\xd1\xc5\xba\xda\" size=\"20,20\"];\n"
    "\tRoot -> CGame__Frame\n"
    "\tCGame__Frame -> CScene__Draw_2_\n"
    "}=================================\xc0\xe0\xd0\xcd\n";

TEST(ProfileTool, HelpListsTheSubcommands) {
    const auto run = RunPind({"profile", "--help"});
    EXPECT_EQ(run.status, 0);
    for (const char* word : {"trace [-o FILE]", "overlay [-o FILE]", "dot REPORT [-o OUT]"}) {
        EXPECT_NE(run.out.find(word), std::string::npos) << word;
    }
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {"profile"}, {"profile", "bogus"}, {"profile", "trace", "-x"}, {"profile", "dot"}}) {
        const auto bad = RunPind(args);
        EXPECT_EQ(bad.status, 2) << args.back();
        EXPECT_NE(bad.err.find("usage: "), std::string::npos);
    }
}

TEST(ProfileTool, TraceWritesChromeJsonToTheDefaultPlace) {
    TempDir dir;
    const auto run = RunPind({"profile", "trace"}, "", dir.Path());
    ASSERT_EQ(run.status, 0) << run.err;
    const JsonDoc doc = ParseJson(dir.Read("profile/trace.json"));
    ASSERT_NE(doc, nullptr);
    int frames = 0, scopes = 0;
    for (const JsonNode* e : TraceEvents(doc)) {
        frames += TraceText(e, "ph") == "i";
        scopes += TraceText(e, "ph") == "X";
    }
    EXPECT_EQ(frames, 200);
    EXPECT_GT(scopes, 200 * 8);
}

TEST(ProfileTool, OverlayDrawsRowsAndTheClassificationGraph) {
    TempDir dir;
    const auto run = RunPind({"profile", "overlay", "-o", "o.svg"}, "", dir.Path());
    ASSERT_EQ(run.status, 0) << run.err;
    const std::string svg = dir.Read("o.svg");
    EXPECT_EQ(svg.rfind("<svg ", 0), 0u);
    EXPECT_NE(svg.find("[CGame::Frame "), std::string::npos);
    EXPECT_NE(svg.find("\xe6\xb6\x88\xe8\x80\x97"), std::string::npos);  // the label in UTF-8
    EXPECT_NE(svg.find(">ClassifyTime[1] = "), std::string::npos);
}

TEST(ProfileTool, UnwritableOutputsFail) {
    TempDir dir;
    dir.Write("profile", "a file in the default folder's place");
    dir.Write("report.log", kReport);
    dir.Write("plain.log", "no graph here\n");
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {"profile", "trace"},
             {"profile", "overlay"},
             {"profile", "trace", "-o", "no/dir/t.json"},
             {"profile", "overlay", "-o", "no/dir/o.svg"},
             {"profile", "dot", "plain.log"},
             {"profile", "dot", "missing.log"},
             {"profile", "dot", "report.log", "-o", "no/dir/g.svg"}}) {
        const auto run = RunPind(args, "", dir.Path());
        EXPECT_EQ(run.status, 1) << args.back();
        EXPECT_EQ(run.err.rfind("pind: profile: ", 0), 0u) << run.err;
    }
}

TEST(ProfileTool, DotTakesTheLastGraph) {
    TempDir dir;
    dir.Write("report.log", kReport);

    // Without Graphviz on the path: the dot text, with a note on how to get it.
    const auto text =
        RunPind({"profile", "dot", "report.log"}, "", dir.Path(), {"PATH=/nonexistent"});
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_EQ(text.out.rfind("digraph G {\n", 0), 0u);
    EXPECT_NE(text.out.find("\tCGame__Frame -> CScene__Draw_2_\n}\n"), std::string::npos);
    EXPECT_EQ(text.out.find("Old"), std::string::npos);
    EXPECT_NE(text.out.find("\xe5\xbe\xae\xe8\xbd\xaf\xe9\x9b\x85\xe9\xbb\x91"), std::string::npos);
    EXPECT_NE(text.err.find("install Graphviz"), std::string::npos);

    const auto svg = RunPind({"profile", "dot", "report.log", "-o", "g.svg"}, "", dir.Path());
    ASSERT_EQ(svg.status, 0) << svg.err;
    const std::string picture = dir.Read("g.svg");
    if (svg.err.find("install Graphviz") == std::string::npos) {
        EXPECT_NE(picture.find("<svg"), std::string::npos);
        EXPECT_NE(picture.find("CScene__Draw_2_"), std::string::npos);
    } else {
        EXPECT_EQ(picture.rfind("digraph G {", 0), 0u);
    }
}

}  // namespace
}  // namespace pind::test

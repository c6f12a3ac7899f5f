// `pind profile`: the scripted scene's trace and overlay files, the call graph out of a report with
// and without Graphviz, and the failures when nothing can be written.

#include "pind/json/FmtJson.h"
#include "tool/RunTool.h"

namespace pind::test {
namespace {

// The tail of a statistics report: an older graph, the last one, then the next heading.
const char kReport[] =
    "old run\n"
    "digraph G {\n\tRoot -> Old\n}=====\n"
    "digraph G {\n"
    "\tedge [fontname=\"\xce\xa2\xc8\xed\xd1\xc5\xba\xda\"];\n"
    "\tnode [fontname=\"\xce\xa2\xc8\xed\xd1\xc5\xba\xda\" size=\"20,20\"];\n"
    "\tRoot -> CGame__Frame\n"
    "\tCGame__Frame -> CScene__Draw_2_\n"
    "}=================================\xc0\xe0\xd0\xcd\n";

TEST(ProfileTool, TraceAndOverlayOfTheScriptedScene) {
    TempDir dir;
    ExpectRuns(
        {{"profile trace", 0, "profile/trace.json\n"}, {"profile overlay -o o.svg", 0, "o.svg\n"}},
        dir.Path());
    const std::string trace = dir.Read("profile/trace.json");
    JsonNode* doc = JsonParse(trace.data(), trace.size());
    ASSERT_NE(doc, nullptr);
    int nInstants = 0;
    for (const JsonNode* e = JsonObjectMember(doc, "traceEvents")->pChild; e; e = e->pNext) {
        nInstants += std::string(JsonGetString(JsonObjectMember(e, "ph"), "")) == "i" ? 1 : 0;
    }
    JsonFree(doc);
    EXPECT_EQ(nInstants, 200);

    const std::string svg = dir.Read("o.svg");
    EXPECT_EQ(svg.rfind("<svg ", 0), 0u);
    EXPECT_NE(svg.find("\xe6\xb6\x88\xe8\x80\x97"), std::string::npos);  // the label in UTF-8
}

// Without Graphviz on the path, dot gives the last graph's text in UTF-8 with a note on how to get
// a picture; and the failures when there is nothing to read or nowhere to write.
TEST(ProfileTool, DotTakesTheLastGraphAndFailuresSayWhy) {
    TempDir dir;
    dir.Write("profile", "a file in the default folder's place");
    dir.Write("report.log", kReport);
    dir.Write("plain.log", "no graph here\n");
    const std::string font = "\xe5\xbe\xae\xe8\xbd\xaf\xe9\x9b\x85\xe9\xbb\x91";
    const std::string dot = "digraph G {\n\tedge [fontname=\"" + font +
                            "\"];\n\tnode [fontname=\"" + font +
                            "\" size=\"20,20\"];\n\tRoot -> CGame__Frame\n"
                            "\tCGame__Frame -> CScene__Draw_2_\n}\n";
    const std::string usage = "usage: pind profile", failed = "pind: profile: ";
    ExpectRuns({{"profile dot report.log", 0, dot, "install Graphviz"},
                {"profile dot report.log -o g.svg", 0, "", "install Graphviz"},
                {"profile", 2, "", usage},
                {"profile bogus", 2, "", usage},
                {"profile dot", 2, "", usage},
                {"profile trace", 1, "", failed},
                {"profile overlay -o no/dir/o.svg", 1, "", failed},
                {"profile dot plain.log", 1, "", failed},
                {"profile dot missing.log", 1, "", failed}},
               dir.Path(), {"PATH=/nonexistent"});
    EXPECT_EQ(dir.Read("g.svg"), dot);
    // With Graphviz, when this machine has it, a picture.
    const auto run = RunPind(Words("profile dot report.log -o g.svg"), "", dir.Path());
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(dir.Read("g.svg").find(run.err.empty() ? "<svg" : "digraph"), std::string::npos);
}

}  // namespace
}  // namespace pind::test

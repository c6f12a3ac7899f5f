// `pind xml check` and `pind xml fmt` as scripts use them: exact stdout, exit statuses, and what
// happens to OUT when loading or saving fails.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/TempDir.h"
#include "tool/RunTool.h"

namespace {

using pind::test::RunPind;

const char kInconsistent[] = "<?xml version=\"1.0\"?>\n<a>\n  <b></c>\n</a>\n";

TEST(PindXml, CheckPrintsOkOrTheErrorAndItsLocation) {
    pind::test::TempDir dir;
    dir.Write("good.xml", "<?xml version=\"1.0\"?>\n<a><b/></a>\n");
    dir.Write("bad.xml", kInconsistent);
    struct Case {
        std::string file;
        int status;
        std::string out;
    } cases[] = {
        {"good.xml", 0, "ok\n"},
        {dir.File("good.xml"), 0, "ok\n"},  // absolute: through the empty second folder
        {"bad.xml", 1,
         "XML file contain inconsistent elements\n'XML file contain inconsistent elements' ,  "
         "file='bad.xml' ,  line=3 ,  col=9\n"},
        {"none.xml", 1,
         "Failed to open XML file\n'Failed to open XML file' ,  file='none.xml' ,  line=0 ,  "
         "col=0\n"},
    };
    for (const Case& c : cases) {
        const auto run = RunPind({"xml", "check", c.file}, "", dir.Path());
        EXPECT_EQ(run.status, c.status) << c.file;
        EXPECT_EQ(run.out, c.out) << c.file;
    }
}

TEST(PindXml, FmtWritesOutOnlyWhenLoadSucceeds) {
    pind::test::TempDir dir;
    dir.Write("in.xml", "<?xml version=\"1.0\"?>\n<a k='&lt;'><b>t</b></a>\n");
    auto run = RunPind({"xml", "fmt", "in.xml", "-o", "out.xml"}, "", dir.Path());
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(dir.Read("out.xml"),
              "\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<a k=\"&lt;\">\n    <b>t</b>\n</a>\n");

    dir.Write("bad.xml", kInconsistent);
    dir.Write("keep.xml", "old");
    run = RunPind({"xml", "fmt", "bad.xml", "-o", "keep.xml"}, "", dir.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out.substr(0, run.out.find('\n')), "XML file contain inconsistent elements");
    EXPECT_EQ(dir.Read("keep.xml"), "old");
}

TEST(PindXml, FmtSaveFailureNamesOutWithTheLoadsLocation) {
    pind::test::TempDir dir;
    dir.Write("in.xml", "<?xml version=\"1.0\"?>\n<a>\n</a>\n");
    dir.Write("nodecl.xml", "<a>\n</a>\n");
    auto run = RunPind({"xml", "fmt", "in.xml", "-o", "no/dir/out.xml"}, "", dir.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out,
              "Failed to ceate XML file\n'Failed to ceate XML file' ,  file='no/dir/out.xml' ,  "
              "line=3 ,  col=4\n");

    run = RunPind({"xml", "fmt", "nodecl.xml", "-o", "out.xml"}, "", dir.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out,
              "XML file without declaration\n'XML file without declaration' ,  file='out.xml' ,  "
              "line=2 ,  col=4\n");
    EXPECT_EQ(dir.Read("out.xml"), "");  // what Save left stays
}

TEST(PindXml, UsageErrorsAndHelp) {
    const std::vector<std::vector<std::string>> bad = {
        {"xml"},
        {"xml", "lint", "a.xml"},
        {"xml", "check"},
        {"xml", "check", "a.xml", "-o", "b.xml"},
        {"xml", "fmt", "a.xml"},
        {"xml", "fmt", "a.xml", "-o"},
        {"xml", "fmt", "-x", "a.xml", "-o", "b.xml"},
    };
    for (const auto& args : bad) {
        const auto run = RunPind(args);
        EXPECT_EQ(run.status, 2) << args.size();
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find("usage: pind xml"), std::string::npos);
    }
    const auto help = RunPind({"xml", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.rfind("usage: pind xml check FILE\n", 0), 0u);
}

}  // namespace

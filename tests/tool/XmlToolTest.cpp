// `pind xml check` and `pind xml fmt` as scripts use them: exact stdout, exit statuses, and what
// happens to OUT when loading or saving fails.

#include "tool/RunTool.h"

namespace pind::test {
namespace {

const char kInconsistent[] = "<?xml version=\"1.0\"?>\n<a>\n  <b></c>\n</a>\n";
const char kInconsistentReport[] =
    "XML file contain inconsistent elements\n'XML file contain inconsistent elements' ,  "
    "file='bad.xml' ,  line=3 ,  col=9\n";

// Check prints ok or the error and its location; fmt writes OUT only when loading succeeds, and
// a failed save names OUT with the load's location.
TEST(PindXml, CheckAndFmt) {
    TempDir dir;
    dir.Write("good.xml", "<?xml version=\"1.0\"?>\n<a><b/></a>\n");
    dir.Write("bad.xml", kInconsistent);
    dir.Write("in.xml", "<?xml version=\"1.0\"?>\n<a k='&lt;'><b>t</b></a>\n");
    dir.Write("keep.xml", "old");
    dir.Write("nodecl.xml", "<a>\n</a>\n");
    ExpectRuns({{"xml check good.xml", 0, "ok\n"},
                {"xml check " + dir.File("good.xml"), 0, "ok\n"},  // through the empty 2nd folder
                {"xml check bad.xml", 1, kInconsistentReport},
                {"xml check none.xml", 1,
                 "Failed to open XML file\n'Failed to open XML file' ,  file='none.xml' ,  line=0 "
                 ",  col=0\n"},
                {"xml", 2, "", "usage: pind xml"},
                {"xml lint a.xml", 2, "", "usage: pind xml"},
                {"xml check a.xml -o b.xml", 2, "", "usage: pind xml"},
                {"xml fmt a.xml", 2, "", "usage: pind xml"},
                {"xml fmt in.xml -o no/dir/out.xml", 1,
                 "Failed to ceate XML file\n'Failed to ceate XML file' ,  file='no/dir/out.xml' ,  "
                 "line=2 ,  col=24\n"},
                {"xml fmt bad.xml -o keep.xml", 1, kInconsistentReport},
                {"xml fmt in.xml -o out.xml", 0}},
               dir.Path());
    EXPECT_EQ(dir.Read("keep.xml"), "old");
    EXPECT_EQ(dir.Read("out.xml"),
              "\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<a k=\"&lt;\">\n    <b>t</b>\n</a>\n");
    ExpectRuns(
        {{"xml fmt nodecl.xml -o out.xml", 1,
          "XML file without declaration\n'XML file without declaration' ,  file='out.xml' ,  "
          "line=2 ,  col=4\n"}},
        dir.Path());
    EXPECT_EQ(dir.Read("out.xml"), "");  // what Save left stays
}

}  // namespace
}  // namespace pind::test

// Readable names for parameterised cases: gtest prints a parameter through PrintTo, and the test
// runner turns that text into the test's name.
//   void PrintTo(const Case& c, std::ostream* os) { *os << pind::test::Printable(c.pszText); }
#ifndef PIND_TESTS_SUPPORT_PRINTABLE_H_
#define PIND_TESTS_SUPPORT_PRINTABLE_H_

#include <string>

namespace pind::test {

/// The text in single quotes, with bytes outside printable ASCII, quotes and backslashes written
/// as \xNN (test runners take names with fewer special characters); a null text as null.
std::string Printable(const char* text);

}  // namespace pind::test

#endif  // PIND_TESTS_SUPPORT_PRINTABLE_H_

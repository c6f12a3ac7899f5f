// Makes a RecordingClient serve its files through PackFOpen, so readers that ask the client to
// open a file (the INI reader) get real CPackFile objects over a test folder.
//   pind::test::TempDir dir; pind::test::RecordingClient client;
//   pind::test::ServeFilesFrom(client, dir.Path());  // OpenFile("a.ini") opens dir/a.ini
#ifndef PIND_TESTS_SUPPORT_PACKFILESERVING_H_
#define PIND_TESTS_SUPPORT_PACKFILESERVING_H_

#include <string>

#include "support/RecordingClient.h"

namespace pind::test {

/// ServeFrom(folder) plus an opener that calls PackFOpen(folder + "/" + name, mode).
void ServeFilesFrom(RecordingClient& client, const std::string& folder);

}  // namespace pind::test

#endif  // PIND_TESTS_SUPPORT_PACKFILESERVING_H_

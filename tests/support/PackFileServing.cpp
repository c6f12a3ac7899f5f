#include "support/PackFileServing.h"

#include "pind/files/PackFile.h"

namespace pind::test {

void ServeFilesFrom(RecordingClient& client, const std::string& folder) {
    client.ServeFrom(folder);
    client.SetOpener(
        [](const std::string& path, const char* mode) { return PackFOpen(path.c_str(), mode); });
}

}  // namespace pind::test

// Runs a fuzz target over files and folders of inputs, for compilers without libFuzzer: the seed
// corpora become regression tests.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {
int RunFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)),
                                  std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    return 1;
}
}  // namespace

int main(int argc, char** argv) {
    int runs = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path path(argv[i]);
        if (std::filesystem::is_directory(path)) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
                if (entry.is_regular_file()) {
                    runs += RunFile(entry.path());
                }
            }
        } else {
            runs += RunFile(path);
        }
    }
    LLVMFuzzerTestOneInput(nullptr, 0);
    std::printf("replayed %d inputs\n", runs);
    return 0;
}

// Runs a fuzzer's entry point once over every file of the folders and files named as arguments, so that
// inputs that once mattered are tried by an ordinary build too.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

// libFuzzer's own mutator, which a fuzzer's mutator calls; replaying mutates nothing.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t * /*data*/, std::size_t size, std::size_t /*maxSize*/) {
    return size;
}

namespace {

int gRuns = 0;

void RunFile(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
    ++gRuns;
}

} // namespace

int main(int argc, char **argv) {
    for (int i = 1; i < argc; ++i) {
        if (!std::filesystem::is_directory(argv[i])) {
            RunFile(argv[i]);
            continue;
        }
        for (const auto &entry : std::filesystem::directory_iterator(argv[i])) {
            RunFile(entry.path());
        }
    }
    std::printf("%d inputs replayed\n", gRuns);
    return gRuns > 0 ? 0 : 1;
}

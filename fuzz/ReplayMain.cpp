// Runs a fuzz target over saved inputs without the fuzzing engine, so that an
// ordinary build replays the corpus and every crash ever found as a test.
// Arguments are files or directories (read recursively, in name order).
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

bool Replay(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return false;
    }
    std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    // A heap copy of exactly the input's size, as the engine passes it, so
    // that a sanitizer build sees reads past the end.
    std::vector<uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.empty() ? nullptr : input.data(), input.size());
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s file-or-directory...\n", argv[0]);
        return 2;
    }
    size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        std::error_code error;
        std::vector<std::filesystem::path> files;
        if (std::filesystem::is_directory(argv[i], error)) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i], error))
                if (entry.is_regular_file()) files.push_back(entry.path());
            std::sort(files.begin(), files.end());
        } else {
            files.push_back(argv[i]);
        }
        for (const auto& file : files) {
            if (!Replay(file)) return 1;
            ++count;
        }
    }
    // An empty corpus replays nothing and proves nothing.
    if (count == 0) {
        std::fprintf(stderr, "no inputs found\n");
        return 1;
    }
    std::printf("replayed %zu inputs\n", count);
    return 0;
}

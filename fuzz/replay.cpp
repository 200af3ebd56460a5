// Runs a fuzzer's function on every file named, and on every file below the directories named.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "support/exact_buffer.h"
#include "support/target.h"

namespace {

namespace fs = std::filesystem;

// In an order that does not depend on the file system.
std::vector<fs::path> FilesIn(const fs::path &path) {
    if (!fs::is_directory(path))
        return {path};
    std::vector<fs::path> files;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(path)) {
        if (entry.is_regular_file())
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool Replay(const fs::path &file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream.is_open()) {
        std::fprintf(stderr, "%s: cannot be read\n", file.c_str());
        return false;
    }
    fuzz::ExactBuffer input(fuzz::Bytes{std::istreambuf_iterator<char>(stream), {}});
    std::fprintf(stderr, "%s\n", file.c_str());  // beforehand: the run may not come back
    LLVMFuzzerTestOneInput(input.data(), input.size());
    return true;
}

}  // namespace

int main(int argc, char **argv) {
    std::vector<fs::path> files;
    for (int i = 1; i < argc; i++) {
        const std::vector<fs::path> found = FilesIn(argv[i]);
        if (found.empty()) {
            std::fprintf(stderr, "%s: no inputs\n", argv[i]);
            return EXIT_FAILURE;
        }
        files.insert(files.end(), found.begin(), found.end());
    }
    const bool all_read = std::all_of(files.begin(), files.end(), Replay);
    std::fprintf(stderr, "%zu inputs\n", files.size());
    return all_read && !files.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
}

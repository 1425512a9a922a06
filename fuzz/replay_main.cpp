// main for fuzz targets outside libFuzzer: runs the target once over every
// file of the folders named on the command line, over the empty input, and
// over a fixed number of seeded variations of each file.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr int kVariationsPerFile = 200;

std::vector<std::uint8_t> contents(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void vary(std::vector<std::uint8_t>& bytes, std::mt19937& random) {
    const auto below = [&](std::size_t n) { return static_cast<std::size_t>(random()) % n; };
    for (std::size_t edits = 1 + below(4); edits > 0; --edits) {
        const std::size_t at = below(bytes.size() + 1);
        switch (below(3)) {
            case 0:
                bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                             static_cast<std::uint8_t>(random()));
                break;
            case 1:
                bytes.resize(at);
                break;
            default:
                if (at < bytes.size()) bytes[at] = static_cast<std::uint8_t>(random());
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    int files = 0;
    LLVMFuzzerTestOneInput(nullptr, 0);
    for (int i = 1; i < argc; ++i) {
        std::vector<std::filesystem::path> paths;
        for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
            paths.push_back(entry.path());
        std::sort(paths.begin(), paths.end());  // the same order on every file system
        for (const auto& path : paths) {
            const std::vector<std::uint8_t> bytes = contents(path);
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            std::mt19937 random(1234567);
            for (int k = 0; k < kVariationsPerFile; ++k) {
                std::vector<std::uint8_t> varied = bytes;
                vary(varied, random);
                LLVMFuzzerTestOneInput(varied.data(), varied.size());
            }
            ++files;
        }
    }
    std::printf("replayed %d files\n", files);
    return files > 0 ? 0 : 1;
}

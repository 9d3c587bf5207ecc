// Runs a fuzz target once over each file of the given folders, and over an empty input.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

// The block has the exact size of the input, so that a sanitizer sees any read past the end.
void runOnce(const std::vector<char>& input) {
    const auto block = std::make_unique<std::uint8_t[]>(input.size());
    std::copy(input.begin(), input.end(), block.get());
    LLVMFuzzerTestOneInput(block.get(), input.size());
}

std::vector<char> contentsOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

int main(int count, char** arguments) {
    int seeds = 0;
    runOnce({});
    for (int i = 1; i < count; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(arguments[i])) {
            runOnce(contentsOf(entry.path()));
            ++seeds;
        }
    }
    std::printf("%d seeds\n", seeds);
    return seeds > 0 ? 0 : 1;
}

// Runs a fuzz target once over each file of the given folders, and over an empty input.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int count, char** arguments) {
    int seeds = 0;
    LLVMFuzzerTestOneInput(nullptr, 0);
    for (int i = 1; i < count; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(arguments[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            std::vector<std::uint8_t> input(std::istreambuf_iterator<char>(file), {});
            input.shrink_to_fit();  // so that a sanitizer sees any read past the end
            LLVMFuzzerTestOneInput(input.data(), input.size());
            ++seeds;
        }
    }
    std::printf("%d seeds\n", seeds);
    return seeds > 0 ? 0 : 1;
}

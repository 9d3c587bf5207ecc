#pragma once

#include <Varnex/url/URL.h>
#include <Varnex/url/URLFile.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <stdlib.h>

/// A folder of files that goes with the test.
class TestFolder {
public:
    TestFolder() { EXPECT_NE(::mkdtemp(folder_.data()), nullptr); }
    ~TestFolder() { std::filesystem::remove_all(folder_); }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    [[nodiscard]] std::string path(const std::string& name) const { return folder_ + "/" + name; }
    [[nodiscard]] Varnex::URL url(const std::string& name) const {
        return Varnex::URL(Varnex::URLFile("", folder_ + "/", "").createRelative(name.empty() ? "." : name));
    }
    void write(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios_base::binary) << content;
    }
    static std::string read(const std::string& path) {
        std::ifstream file(path, std::ios_base::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// How many temporary files of this process there are.
    static long temporaryFiles() {
        return std::count_if(made.begin(), made.end(), [](const auto& name) { return std::filesystem::exists(name); });
    }
    /// All that mkostemp(3) has made.
    static inline std::vector<std::string> made;

private:
    std::string folder_ = "/tmp/testfolderXXXXXX";
};

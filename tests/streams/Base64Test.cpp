#include <Varnex/streams/Base64.h>
#include <Varnex/streams/Base64Kernel.h>

#include <gtest/gtest.h>

#include <memory>
#include <random>

using namespace Varnex;

namespace {

// Blocks of exact size, so that a sanitizer sees any access outside.
std::string encoded(const std::string& bytes) {
    const auto in = std::make_unique<char[]>(bytes.size());
    const auto size = encodedBase64Size(bytes.size());
    const auto out = std::make_unique<char[]>(size);
    std::copy(bytes.begin(), bytes.end(), in.get());
    encodeBase64(out.get(), in.get(), bytes.size());
    return {out.get(), size};
}

std::string decoded(const std::string& text, Base64Mode mode) {
    const auto in = std::make_unique<char[]>(text.size());
    std::copy(text.begin(), text.end(), in.get());
    unsigned long size = 0;
    const auto asked = decodeBase64(nullptr, size, {in.get(), text.size()}, mode);
    if (asked == Base64Result::Decoded) return size == 0 ? "" : "(wrong size)";
    const auto out = std::make_unique<char[]>(size);
    const unsigned long needed = size;
    if (asked == Base64Result::TooSmall) {
        EXPECT_GT(needed, 0U);
        unsigned long less = needed - 1;
        EXPECT_EQ(decodeBase64(out.get(), less, {in.get(), text.size()}, mode), Base64Result::TooSmall);
        EXPECT_EQ(less, needed);
        if (decodeBase64(out.get(), size, {in.get(), text.size()}, mode) == Base64Result::Decoded)
            return {out.get(), size};
    }
    return size == 0 ? "(bad)" : "(wrong size)";
}

struct Case {
    std::string text, strict, skip;
};

TEST(Base64Test, DecodesStrictlyOrSkippingAndTellsTheSize) {
    const Case cases[] = {{"", "", ""},
                          {"TQ==", "M", "M"},
                          {"TWE=", "Ma", "Ma"},
                          {"TWFu", "Man", "Man"},
                          {"TWFuTQ==", "ManM", "ManM"},
                          {"+/+/", "\xfb\xff\xbf", "\xfb\xff\xbf"},
                          {"TQ", "(bad)", "M"},
                          {"TQ=", "(bad)", "M"},
                          {"TWE", "(bad)", "Ma"},
                          {"T", "(bad)", "(bad)"},
                          {"T===", "(bad)", "(bad)"},
                          {"====", "(bad)", ""},
                          {"TWFu====", "(bad)", "Man"},
                          {"TWFuT", "(bad)", "(bad)"},
                          {"TR==", "(bad)", "M"},  // unused bits are set
                          {"TWF=", "(bad)", "Ma"},
                          {"TQ==TWFu", "(bad)", "M"},  // padded in the middle
                          {"T=Q=", "(bad)", "(bad)"},
                          {"TQ=u", "(bad)", "M"},
                          {" T\r\nW-F_u\x80 ", "(bad)", "Man"},
                          {"TWFu\n", "(bad)", "Man"},
                          {std::string("TW\0Fu", 5) + "\xff", "(bad)", "Man"},
                          {"    ", "(bad)", ""},
                          {std::string(32, 'A') + std::string(12, ' '), "(bad)", std::string(24, '\0')}};
    for (const auto& [text, strict, skip] : cases) {
        SCOPED_TRACE(testing::PrintToString(text));
        EXPECT_EQ(decoded(text, Base64Mode::Strict), strict);
        EXPECT_EQ(decoded(text, Base64Mode::Skip), skip);
        if (strict == "(bad)") continue;
        EXPECT_EQ(encoded(strict), text);
    }
}

std::string randomBytes(std::mt19937& random, std::size_t size) {
    std::string bytes(size, 0);
    for (char& c : bytes) c = static_cast<char>(random());
    return bytes;
}

class Base64KernelTest : public testing::TestWithParam<const Base64Kernel*> {
protected:
    void SetUp() override {
        if (GetParam() == nullptr) GTEST_SKIP() << "this processor has no such instructions";
        base64Kernel = GetParam();
    }
    void TearDown() override { base64Kernel = before_; }

private:
    const Base64Kernel* before_ = base64Kernel;
};

TEST_P(Base64KernelTest, EveryLengthAndRandomDataComeBack) {
    std::mt19937 random(1);
    for (std::size_t size = 0; size < 1500; size += size < 300 ? 1 : 97) {
        const std::string bytes = randomBytes(random, size);
        const std::string text = encoded(bytes);
        base64Kernel = &portableBase64Kernel;
        ASSERT_EQ(text, encoded(bytes));
        base64Kernel = GetParam();
        ASSERT_EQ(decoded(text, Base64Mode::Strict), bytes);
        ASSERT_EQ(decoded(text, Base64Mode::Skip), bytes);
        ASSERT_EQ(decoded("\n" + text.substr(0, size / 2) + "\r\n" + text.substr(size / 2), Base64Mode::Skip), bytes);
    }
}

TEST_P(Base64KernelTest, EveryWrongByteStopsItsGroupAtEveryPlace) {
    const std::string text = encoded(std::string(99, '\xa5'));
    const auto out = std::make_unique<unsigned char[]>(99);
    for (int byte = 0; byte < 256; ++byte) {
        const auto c = static_cast<char>(byte);
        for (std::size_t at = 0; at < text.size(); at += byte % 3 == 0 ? 1 : 7) {
            const auto in = std::make_unique<char[]>(text.size());
            std::copy(text.begin(), text.end(), in.get());
            in[at] = c;
            const bool good = index_64[static_cast<unsigned char>(byte)] < 64;
            ASSERT_EQ(base64Kernel->decode(out.get(), in.get(), 33), good ? 33 : at / 4) << byte << " at " << at;
        }
        EXPECT_EQ(index_64[static_cast<unsigned char>(byte)] < 64, c != 0 && std::string(basis_64).find(c) < 64);
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, Base64KernelTest, testing::Values(&portableBase64Kernel, vectorBase64Kernel()),
                         [](const auto& kernel) { return kernel.index == 0 ? "Portable" : "Vector"; });

TEST(Base64Test, TheFastestKernelOfThisProcessorIsChosenAtLoad) {
    EXPECT_EQ(base64Kernel, vectorBase64Kernel() != nullptr ? vectorBase64Kernel() : &portableBase64Kernel);
}

}  // namespace

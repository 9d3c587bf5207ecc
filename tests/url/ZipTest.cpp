#include <Varnex/url/URLLocalFile.h>
#include <Varnex/url/URLMemory.h>
#include <Varnex/url/URLPolicy.h>
#include <Varnex/url/URLStream.h>
#include <Varnex/url/URLZip.h>
#include <tests/support/ScriptedScheme.h>
#include <tests/support/TestFolder.h>
#include <tests/support/ThrowsText.h>
#include <tests/url/Deflate.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>
#include <thread>
#include <vector>

using namespace Varnex;

namespace {

std::string number(unsigned long value, int bytes) {
    std::string text;
    for (; bytes > 0; --bytes, value >>= 8) text += static_cast<char>(value);
    return text;
}

struct Member {
    std::string name, content;
    unsigned long method = 8, flags = 0, crcError = 0, sizeError = 0, time = 7;
};

std::string commonHeader(const Member& m, const std::string& data) {
    const auto* const bytes = reinterpret_cast<const Bytef*>(m.content.data());
    const unsigned long crc = crc32_z(0, bytes, m.content.size()) ^ m.crcError;
    return number(20, 2) + number(m.flags, 2) + number(m.method, 2) + number(m.time, 4) + number(crc, 4) +
           number(data.size(), 4) + number(m.content.size() + m.sizeError, 4) + number(m.name.size(), 2);
}

/// An archive with the records of each member as they should be but for its errors.
std::string zip(const std::vector<Member>& members, const std::string& front = "", const std::string& comment = "") {
    std::string archive, directory;
    for (const Member& m : members) {
        const std::string data = m.method == 8 ? deflated(m.content) : m.content, header = commonHeader(m, data);
        directory += "PK\1\2" + number(20, 2) + header + number(2, 2) + number(3, 2) + number(0, 8) +
                     number(archive.size(), 4) + m.name + "xxccc";
        archive += "PK\3\4" + header + number(1, 2) + m.name + "x" + data;
    }
    const std::string count = number(members.size(), 2);
    const std::string end = "PK\5\6" + number(0, 4) + count + count + number(directory.size(), 4) +
                            number(archive.size(), 4) + number(comment.size(), 2) + comment;
    return front + archive + directory + end;
}

class ZipTest : public testing::Test {
protected:
    ~ZipTest() override { URLZip::clearCache(); }

    [[nodiscard]] URL member(const std::string& name, const std::string& archive = "a.zip") const {
        return URL::resolve({}, "zip:" + folder.path(archive) + "!/" + name);
    }
    void write(const std::string& archive) const { folder.write("a.zip", archive); }

    /// The content or the message.
    static std::string content(const URL& url) try {
        const URLImpl::Memory memory = url->read2mem();
        return {memory.getData() == nullptr ? "" : memory.getData(), static_cast<std::size_t>(memory.getSize())};
    } catch (const URLImpl::Exception& error) {
        return std::string("! ") + error.what();
    }
    [[nodiscard]] std::string contentOf(const std::string& archive, const std::string& name = "a") const {
        write(archive);
        return content(member(name));
    }

    /// Opens a URL when the process ends, after the objects that functions of the library keep.
    struct Last {
        ~Last() {
            if (url) std::cerr << "at the end: " << content(url);
        }
        URL url;
    };
    static inline Last last;

    TestFolder folder;
    const std::string long_ = someText(50000);
};

TEST_F(ZipTest, OpensMembers) {
    const std::vector<Member> members = {
        {"a", "twice"}, {"b/c d.html", long_}, {"empty", ""}, {"stored.css", long_, 0}, {"a", "last"}};
    for (const std::string front : {"", "a program"}) {
        for (const std::string comment : {"", "PK\5\6 remarks"}) {
            write(zip(members, front, comment));
            EXPECT_EQ(content(member("a")), "last");
            EXPECT_EQ(content(member("b/c%20d.html")), long_);
            EXPECT_EQ(content(member("empty")), "");
            EXPECT_EQ(content(member("stored.css")), long_);
            EXPECT_EQ(content(member("none")), "! Zip does not contain file");
            EXPECT_EQ(content(member("b/")), "! Zip does not contain file");
            EXPECT_EQ(content(member("")), "! Zip does not contain file");
        }
    }
    const std::unique_ptr<URLImpl::Stream> stream(member("b/c d.html")->open());
    EXPECT_EQ(stream->getMimeType(), "text/html");
    EXPECT_EQ(stream->getContentLength(), 50000);
    std::string read(1, static_cast<char>(stream->get()));
    for (char block[777]; stream->read(block, sizeof block) || stream->gcount() > 0;)
        read.append(block, static_cast<std::size_t>(stream->gcount()));
    EXPECT_EQ(read, long_);
    EXPECT_TRUE(stream->eof() && !stream->bad());
    const URLImpl::File file = member("stored.css")->read2disk();
    EXPECT_EQ(TestFolder::read(file.getName()), long_);
}

TEST_F(ZipTest, ArchivesInArchives) {
    const std::string inner = zip({{"c", "deep"}});
    write(zip({{"b.zip", inner}}));
    EXPECT_EQ(content(URL::resolve({}, "jar:zip:" + folder.path("a.zip") + "!/b.zip!/c")), "deep");
    const URL base = URL::resolve({}, "zip:" + folder.path("a.zip") + "!/x/y");
    EXPECT_EQ(content(URL::resolve(base, "../b.zip")), inner);
    std::string data = zip({{"a", "in a URL"}});
    URLImpl::encodeUnsafeCharacters(data);
    EXPECT_EQ(content(URL::resolve({}, "zip:data:," + data + "!/a")).substr(0, 1), "!");  // a NUL never comes of "%00"
}

TEST_F(ZipTest, DamageIsTold) {
    const std::string good = zip({{"a", long_}});
    const auto patched = [&](std::size_t fromEnd, const std::string& bytes) {
        return std::string(good).replace(good.size() - fromEnd, bytes.size(), bytes);
    };
    constexpr char kInvalid[] = "! Invalid zip file", kUnsupported[] = "! Unsupported compression method";
    const std::string zip64Locator = "PK\6\7" + std::string(16, '\0');
    const std::size_t directory = 22 + 46 + 1 + 5;  // bytes before the end
    const std::pair<std::string, std::string> cases[] = {
        {"", "! Cannot find end of central directory"},
        {"PK\5\6", "! Cannot find end of central directory"},
        {good.substr(0, good.size() - 1), "! Cannot find end of central directory"},
        {good.substr(1), kInvalid},
        {std::string(good).insert(good.size() - 22, zip64Locator), kInvalid},
        {patched(2, "\1"), "! Cannot find end of central directory"},
        {patched(18, "\1"), kInvalid},                      // another disk
        {patched(14, "\2"), kInvalid},                      // counts that differ
        {patched(14, std::string("\2\0\2", 3)), kInvalid},  // two members
        {patched(10, "\xff\xff\xff\xff"), kInvalid},        // size of the directory
        {patched(6, "\xff\xff\xff\xff"), kInvalid},         // its place
        {patched(directory, "X"), kInvalid},
        {patched(directory - 28, "\xff\xff"), kInvalid},  // length of the name
        {patched(directory - 42, "\xff\xff"), kInvalid},  // place of the member
        {zip({{"a", "x", 8, 1}}), kUnsupported},
        {zip({{"a", "x", 12}}), kUnsupported},
        {zip({{"a", "x", 8, 0, 0, 0xFFFFFFFE}}), kUnsupported},
        {zip({{"a", "x", 0, 0, 0, 1}}), kInvalid},
        {zip({{"a", long_, 8, 0, 1}}), kInvalid},
        {zip({{"a", long_, 8, 0, 0, 1}}), kInvalid},           // shorter than announced
        {zip({{"a", long_, 8, 0, 0, 0xFFFFFFFF}}), kInvalid},  // one byte longer
        {std::string(good).replace(30, 1, "b"), kInvalid},
        {std::string(good).replace(0, 1, "X"), kInvalid},
        {std::string(good).replace(5000, 99, 99, '\xff'), kInvalid},
    };
    for (const auto& c : cases) EXPECT_EQ(contentOf(c.first), c.second) << &c - cases;
}

TEST_F(ZipTest, WhatWasDecodedComesBeforeTheFailure) {
    for (const unsigned long method : {0UL, 8UL}) {
        write(zip({{"a", long_, method, 0, 1}}));
        const std::unique_ptr<URLImpl::Stream> stream(member("a")->open());
        std::string read(50000, '\0');
        EXPECT_TRUE(stream->read(read.data(), 50000));
        EXPECT_EQ(read, long_);
        EXPECT_EQ(stream->get(), EOF);
        EXPECT_TRUE(stream->bad());
        EXPECT_THROWS_TEXT(stream->rdbuf()->sgetc(), URLImpl::Exception, "Invalid zip file");
        EXPECT_THROWS_TEXT(member("a")->read2disk(), URLImpl::Exception, "Invalid zip file");
        read.resize(50001);  // reaches the end in one call, after which a stream does not ask again
        const std::unique_ptr<URLImpl::Stream> again(member("a")->open());
        EXPECT_TRUE(again->read(read.data(), 50001).bad());
        EXPECT_EQ(again->gcount(), 50000);
    }
}

TEST_F(ZipTest, AReplacedArchiveIsNoticed) {
    EXPECT_EQ(contentOf(zip({{"a", "one"}, {"b", "B"}})), "one");
    EXPECT_EQ(contentOf(zip({{"b", "B"}, {"a", "one"}})), "one");
    EXPECT_EQ(contentOf(zip({{"a", "new", 8, 0, 0, 0, 8}, {"b", "B"}})), "new");
    EXPECT_EQ(contentOf(zip({{"c", "one"}, {"b", "B"}})), "! Zip does not contain file");
    EXPECT_EQ(contentOf(zip({{"a", "longer"}})), "longer");
    EXPECT_EQ(contentOf("x"), "! Cannot find end of central directory");
    std::filesystem::remove(folder.path("a.zip"));
    EXPECT_EQ(content(member("a")), "! Open error - cannot open file");
}

TEST_F(ZipTest, OneCopyOfARemoteArchiveServesAllMembers) {
    const ScriptedScheme remote("remote");
    script.content = zip({{"a", long_}, {"b", "B"}});
    const auto before = TestFolder::temporaryFiles();
    const auto remoteMember = [](const std::string& name) { return URL::resolve({}, "zip:remote://[::1]/x!/" + name); };
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(content(remoteMember("a")), long_);
        EXPECT_EQ(content(remoteMember("b")), "B");
        EXPECT_EQ(content(remoteMember("c")), "! Zip does not contain file");
    }
    EXPECT_EQ(script.opened, 1);
    EXPECT_EQ(TestFolder::temporaryFiles(), before + 1);
    auto policy = std::make_shared<URLPolicy>();
    policy->setPublicHostsOnly(true);
    URLPolicy::setCurrent(policy);
    EXPECT_EQ(content(remoteMember("a")), "! Open error - not allowed by the URL policy");
    URLPolicy::setCurrent(nullptr);
    EXPECT_EQ(content(remoteMember("a")), long_);
    std::filesystem::remove(TestFolder::made.back());  // as those do who tidy the system
    EXPECT_EQ(content(remoteMember("b")), "B");

    const std::unique_ptr<URLImpl::Stream> open(remoteMember("a")->open());
    URLZip::clearCache();
    EXPECT_EQ(TestFolder::temporaryFiles(), before);
    EXPECT_EQ(open->get(), long_[0]);
    script.content.resize(100);
    EXPECT_EQ(content(remoteMember("a")), "! Cannot find end of central directory");
    EXPECT_EQ(TestFolder::temporaryFiles(), before);
}

TEST_F(ZipTest, OpensUntilTheProcessEnds) {
    write(zip({{"a", "A"}}));
    EXPECT_EXIT((last.url = member("a"), content(last.url), std::exit(0)), testing::ExitedWithCode(0), "at the end: A");
}

TEST_F(ZipTest, LimitsCanBeSet) {
    write(zip({{"a", long_}}));
    URLZip::setMaxDirectorySize(51);
    EXPECT_EQ(content(member("a")), "! Invalid zip file");
    URLZip::setMaxDirectorySize(52);
    EXPECT_EQ(content(member("a")), long_);
    URLZip::setMaxDirectorySize(URLZip::kDefaultMaxDirectorySize);
    URLZip::setMaxNesting(1);
    EXPECT_THROWS_TEXT(URL::resolve({}, "zip:zip:a!/b!/c"), URLImpl::Exception, "Cannot parse URL");
    URLZip::setMaxNesting(URLZip::kDefaultMaxNesting);
    auto policy = std::make_shared<URLPolicy>();
    policy->setMaxSize(40000);
    URLPolicy::setCurrent(policy);
    EXPECT_EQ(content(member("a")), "! Open error - larger than the URL policy allows");
    URLPolicy::setCurrent(nullptr);

    const ScriptedScheme remote("remote");
    script.content = zip({{"a", "x"}});
    const auto open = [](const std::string& host) { return content(URL::resolve({}, "zip:remote://" + host + "!/a")); };
    URLZip::setCacheSize(2);
    for (const char* const host : {"1", "2", "1", "3", "1"}) EXPECT_EQ(open(host), "x");
    EXPECT_EQ(script.opened, 3);
    open("2");
    EXPECT_EQ(script.opened, 4);
    URLZip::setCacheSize(0);
    for (int i = 0; i < 2; ++i) open("2");
    EXPECT_EQ(script.opened, 6);
    URLZip::setCacheSize(URLZip::kDefaultCacheSize);
}

TEST_F(ZipTest, ThreadsShareTheDirectories) {
    write(zip({{"a", long_}, {"b", "B"}}));
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 50; ++round) {
                if (i == 0) URLZip::clearCache();
                EXPECT_EQ(content(member(i % 2 == 0 ? "a" : "b")), i % 2 == 0 ? long_ : "B");
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST_F(ZipTest, EveryCutIsAnErrorOrTheWhole) {
    const std::string good = zip({{"a", someText(300), 0}, {"b", someText(600)}}), a = someText(300);
    for (std::size_t cut = 0; cut < good.size(); ++cut) {
        EXPECT_EQ(contentOf(good.substr(0, cut)).substr(0, 2), "! ");
        std::string flipped = good;
        flipped[cut] = static_cast<char>(flipped[cut] ^ 0x41);
        const std::string read = contentOf(flipped);
        EXPECT_TRUE(read == a || read.starts_with("! ")) << cut;
    }
}

}  // namespace

#include <Varnex/transport/UniqueFd.h>
#include <Varnex/url/URL.h>
#include <Varnex/url/URLFile.h>
#include <Varnex/url/URLLocalFile.h>
#include <Varnex/url/URLMemory.h>
#include <Varnex/url/URLPolicy.h>
#include <Varnex/url/URLStream.h>
#include <Varnex/url/URLZip.h>
#include <tests/support/FailingCall.h>
#include <tests/support/TestFolder.h>
#include <tests/support/ThrowsText.h>

#include <gtest/gtest.h>

#include <climits>
#include <sstream>

#include <netinet/in.h>
#include <sys/inotify.h>
#include <sys/stat.h>

using namespace Varnex;

namespace {

constexpr char kCannotOpen[] = "Open error - cannot open file";

TEST(FileUrlTest, OpensRegularFilesOnly) {
    const TestFolder folder;
    folder.write("a b.HTML", "content");
    ASSERT_EQ(::mkfifo(folder.path("fifo").c_str(), 0600), 0);
    const UniqueFd watch(::inotify_init1(IN_NONBLOCK));
    ASSERT_GE(::inotify_add_watch(watch.get(), folder.path("fifo").c_str(), IN_OPEN), 0);
    std::filesystem::create_symlink(folder.path("a b.HTML"), folder.path("link"));
    for (const char* const name : {"a b.HTML", "a%20b.HT%4dL"}) {
        const URL url = folder.url(name);
        const std::unique_ptr<URLImpl::Stream> stream(url->open());
        EXPECT_EQ(stream->getMimeType(), "text/html");
        EXPECT_EQ(stream->getContentLength(), 7);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(*stream), {}), "content");
        EXPECT_EQ(url->read2mem().getSize(), 7);
        const URLImpl::File file = url->read2disk();
        EXPECT_EQ(file.getName(), folder.path("a b.HTML"));
        EXPECT_EQ(file.getMimeType(), "text/html");
        EXPECT_EQ(file.getSize(), 7);
        EXPECT_FALSE(file.isTemporary());
    }
    EXPECT_TRUE(std::filesystem::exists(folder.path("a b.HTML")));
    EXPECT_EQ(folder.url("link")->read2mem().getSize(), 7);
    folder.write("a%00", "");
    const auto expectRefused = [](const URL& url, const char* text) {
        EXPECT_THROWS_TEXT(url->open(), URLImpl::Exception, text);
        EXPECT_THROWS_TEXT(url->read2disk(), URLImpl::Exception, text);
    };
    for (const char* const name : {"", "none", "fifo", "a%00", "a%20b.HTML/"})
        expectRefused(folder.url(name), kCannotOpen);
    expectRefused(URL(new URLFile("", folder.path("link") + std::string("\0x", 2), "")), kCannotOpen);
    expectRefused(URL::resolve({}, "file:///dev/zero"), kCannotOpen);
    char event[256];
    EXPECT_EQ(::read(watch.get(), event, sizeof event), -1) << "what is no file is not even opened";
    expectRefused(URL::resolve({}, "file://server/etc/passwd"), "Open error - do not know how to handle host");
}

TEST(FileUrlTest, SparseFilesAboveTwoGigabytesHaveNoLength) {
    const TestFolder folder;
    folder.write("large", "");
    folder.write("just", "");
    std::filesystem::resize_file(folder.path("large"), std::uintmax_t{1} << 32);
    const URL url = folder.url("large");
    EXPECT_EQ(url->read2disk().getSize(), -1);
    std::filesystem::resize_file(folder.path("just"), INT_MAX);
    EXPECT_EQ(folder.url("just")->read2disk().getSize(), INT_MAX);
    const std::unique_ptr<URLImpl::Stream> stream(url->open());
    EXPECT_EQ(stream->getContentLength(), -1);
    stream->seekg(-1, std::ios_base::end);
    EXPECT_EQ(stream->tellg(), (std::streamoff{1} << 32) - 1);
    EXPECT_EQ(stream->get(), 0);
}

/// A URL whose stream is a text.
struct TextUrl : URLFile {
    TextUrl(std::string text, int length) : text_(std::move(text)), length_(length) {}
    Stream* open() const override { return new Stream(std::make_unique<std::stringbuf>(text_), "a/b", length_); }
    File read2disk() const override { return URLImpl::read2disk(); }
    std::string text_;
    int length_;
};

TEST(FetchTest, TemporaryFilesGoExactlyOnce) {
    const std::string content(100000, 'x');
    std::string name;
    {
        URLImpl::File file = TextUrl(content, -1).read2disk();
        name = file.getName();
        struct stat status {};
        ASSERT_EQ(::stat(name.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0600U);
        EXPECT_EQ(status.st_size, 100000);
        EXPECT_EQ(file.getSize(), 100000);
        EXPECT_EQ(file.getMimeType(), "a/b");
        EXPECT_TRUE(file.isTemporary());
        EXPECT_EQ(TestFolder::read(name), content);
        URLImpl::File moved = std::move(file);
        EXPECT_EQ(moved.getName(), name);
        moved = TextUrl("y", 1).read2disk();
        EXPECT_TRUE(std::filesystem::exists(moved.getName()));
        EXPECT_FALSE(std::filesystem::exists(name));
        name = moved.getName();
    }
    EXPECT_FALSE(std::filesystem::exists(name));
}

TEST(FetchTest, FailuresLeaveNoFileBehind) {
    const auto before = TestFolder::temporaryFiles();
    EXPECT_THROWS_TEXT(TextUrl("abc", 4).read2disk(), URLImpl::Exception, "");
    {
        const FailingCall failing(Call::mkostemp, EMFILE);
        EXPECT_THROWS_TEXT(TextUrl("abc", 3).read2disk(), URLImpl::Exception,
                           "Cannot make a temporary file (Too many open files)");
    }
    {
        const FailingCall failing(Call::write, ENOSPC);
        EXPECT_THROWS_TEXT(TextUrl("abc", 3).read2disk(), URLImpl::Exception,
                           "Cannot write a temporary file (No space left on device)");
    }
    {
        const FailingCall failing(Call::close, EIO);
        EXPECT_THROWS_TEXT(TextUrl("abc", 3).read2disk(), URLImpl::Exception,
                           "Cannot write a temporary file (Input/output error)");
    }
    {
        const FailingCall failing(Call::write, EINTR);
        EXPECT_EQ(TextUrl("abc", 3).read2disk().getSize(), 3);
    }
    EXPECT_EQ(TestFolder::temporaryFiles(), before);
    const FailingCall shortly(Call::write, 0, 2);  // pretends to have written two bytes
    EXPECT_EQ(TestFolder::read(TextUrl("abc", 3).read2disk().getName()), "c");
}

/// A URL whose stream throws at every use, or has no buffer.
struct BadUrl : URLFile {
    struct Buffer : std::streambuf {
        int_type underflow() override { throw 1; }
        pos_type seekoff(off_type, std::ios_base::seekdir, std::ios_base::openmode) override { throw 1; }
    };
    explicit BadUrl(bool hasBuffer) : hasBuffer_(hasBuffer) {}
    Stream* open() const override { return makeStream(hasBuffer_ ? std::make_unique<Buffer>() : nullptr, "", -1); }
    File read2disk() const override { return URLImpl::read2disk(); }
    bool hasBuffer_;
};

TEST(FetchTest, WhateverASourceThrowsBecomesOurs) {
    for (const bool hasBuffer : {true, false}) {
        EXPECT_THROWS_TEXT(BadUrl(hasBuffer).read2mem(), URLImpl::Exception, "");
        EXPECT_THROWS_TEXT(BadUrl(hasBuffer).read2disk(), URLImpl::Exception, "");
        const URLZip member("zip", URL(new BadUrl(hasBuffer)), "/a", "");
        EXPECT_THROWS_TEXT(member.open(), URLImpl::Exception, "");
    }
}

/// Makes a policy the current one for the length of a test.
class PolicyTest : public testing::Test {
protected:
    ~PolicyTest() override { URLPolicy::setCurrent(nullptr); }

    template <class Set>
    static void use(Set set) {
        auto policy = std::make_shared<URLPolicy>();
        set(*policy);
        URLPolicy::setCurrent(policy);
    }
    static std::string outcome(const URL& url) try {
        return std::to_string(url->read2mem().getSize());
    } catch (const URLImpl::Exception& error) {
        return error.what();
    }
    static constexpr char kNotAllowed[] = "Open error - not allowed by the URL policy";
    static constexpr char kTooLarge[] = "Open error - larger than the URL policy allows";
};

TEST_F(PolicyTest, AllowsSchemesAndSizes) {
    use([](URLPolicy& policy) {
        policy.setAllowedSchemes({"data", "file"});
        policy.setMaxSize(4);
    });
    EXPECT_EQ(outcome(URL::resolve({}, "data:,abcd")), "4");
    EXPECT_EQ(outcome(URL::resolve({}, "data:,abcde")), kTooLarge);
    EXPECT_EQ(outcome(URL::resolve({}, "zip:data:,a!/b")), kNotAllowed);
    EXPECT_EQ(outcome(URL(new TextUrl("abcd", -1))), "4");
    EXPECT_EQ(outcome(URL(new TextUrl(std::string(9000, 'x'), -1))), kTooLarge);
    EXPECT_THROWS_TEXT(TextUrl("abcde", -1).read2disk(), URLImpl::Exception, kTooLarge);
    const TestFolder folder;
    folder.write("a", "abcde");
    EXPECT_THROWS_TEXT(folder.url("a")->open(), URLImpl::Exception, kTooLarge);
    EXPECT_THROWS_TEXT(folder.url("a")->read2disk(), URLImpl::Exception, kTooLarge);
    use([](URLPolicy& policy) { policy.setAllowedSchemes({"zip"}); });
    for (const char* const text : {"cg:a", "data:,a", "ftp://h/a", "file:///", "http://h"}) {
        EXPECT_EQ(outcome(URL::resolve({}, text)), kNotAllowed);
        EXPECT_THROWS_TEXT(URL::resolve({}, text)->open(), URLImpl::Exception, kNotAllowed);
    }
}

TEST_F(PolicyTest, ConfinesFiles) {
    const TestFolder folder;
    std::filesystem::create_directory(folder.path("in"));
    folder.write("in/a", "x");
    folder.write("out", "xy");
    folder.write("inside", "xyz");
    std::filesystem::create_symlink(folder.path("out"), folder.path("in/link"));
    use([&](URLPolicy& policy) { policy.setFileRoot(folder.path("in/../in")); });
    EXPECT_EQ(outcome(folder.url("in/a")), "1");
    EXPECT_EQ(outcome(folder.url("in/../in/a")), "1");
    for (const char* const name : {"out", "in/../out", "in/link", "inside", "none", "in/none"})
        EXPECT_EQ(outcome(folder.url(name)), kCannotOpen) << name;
    EXPECT_THROWS_TEXT(folder.url("in/link")->read2disk(), URLImpl::Exception, kCannotOpen);
    URLPolicy policy;
    EXPECT_THROW(policy.setFileRoot(folder.path("none")), URLImpl::Exception);
}

TEST_F(PolicyTest, KnowsPublicHosts) {
    use([](URLPolicy& policy) { policy.setPublicHostsOnly(true); });
    const auto policy = URLPolicy::getCurrent();
    for (const char* const host : {"localhost",
                                   "LOCALHOST.",
                                   "a.localhost",
                                   "127.0.0.1",
                                   "127.0.0.1.",
                                   "127.0.0.1 ",
                                   "127%2e0.0.1",
                                   "LOCALHOST%2e",
                                   "127.1",
                                   "0x7f000001",
                                   "2130706433",
                                   "017700000001",
                                   "10.1.2.3",
                                   "172.31.0.1",
                                   "192.168.1.1",
                                   "169.254.169.254",
                                   "100.64.0.1",
                                   "0.0.0.0",
                                   "224.0.0.1",
                                   "255.255.255.255",
                                   "[::1]",
                                   "::1",
                                   "[::]",
                                   "[fe80::1]",
                                   "[::1%25lo]",
                                   "[::1%3a5]",
                                   "[3fff::1]",
                                   "[fc00::1]",
                                   "[::ffff:127.0.0.1]",
                                   "[64:ff9b::a00:1]",
                                   "[2002:7f00:1::]",
                                   "[2001:db8::1]",
                                   "[ff02::1]"})
        EXPECT_FALSE(policy->allowsHost(host)) << host;
    for (const char* const host : {"", "example.org", "8.8.8.8", "172.32.0.1", "100.128.0.1", "[2600::1]",
                                   "[::ffff:8.8.8.8]", "notlocalhost", "999.1.1.1"})
        EXPECT_TRUE(policy->allowsHost(host)) << host;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_FALSE(policy->allowsAddress(reinterpret_cast<const sockaddr&>(address)));
    EXPECT_TRUE(URLPolicy().allowsAddress(reinterpret_cast<const sockaddr&>(address)));
    EXPECT_EQ(outcome(URL::resolve({}, "http://%31%32%37.1/")), kNotAllowed);
    EXPECT_EQ(outcome(URL::resolve({}, "ftp://localhost/x")), kNotAllowed);
    EXPECT_TRUE(URLPolicy().allowsHost("localhost"));
}

}  // namespace

#include <Varnex/protocols/ProtocolHTTP.h>

#include <gtest/gtest.h>

#include <sstream>

using namespace Varnex;
using Http = ProtocolHTTP;

namespace {

const auto kGood = std::ios_base::goodbit, kFail = std::ios_base::failbit, kEof = std::ios_base::eofbit;

std::string listed(const Plexa::ParamBag& bag) {
    std::string text;
    for (const auto& [name, value] : bag.params()) text += name + "=" + value + "|";
    return text;
}

/// Delivers the text in pieces of `step`; 0: without a buffer, so that nothing can be looked at ahead.
class PiecewiseSource : public std::streambuf {
public:
    PiecewiseSource(std::string text, std::size_t step) : text_(std::move(text)), step_(step) {}

protected:
    int_type underflow() override {
        if (text_.empty()) return traits_type::eof();
        if (step_ == 0) return traits_type::to_int_type(text_[0]);
        piece_ = text_.substr(0, step_);
        text_.erase(0, step_);
        setg(piece_.data(), piece_.data(), piece_.data() + piece_.size());
        return traits_type::to_int_type(piece_[0]);
    }
    int_type uflow() override {
        if (step_ > 0) return std::streambuf::uflow();
        const int_type next = underflow();
        text_.erase(0, 1);
        return next;
    }

private:
    std::string text_, piece_;
    std::size_t step_;
};

TEST(MessageHeaderTest, ReadsHoweverTheStreamDelivers) {
    struct Case {
        std::string text, params;
        std::ios_base::iostate state;
        std::string rest;
    };
    const Case cases[] = {
        {"Host: a\r\n\r\nbody", "Host=a|", kGood, "body"},
        {"Host: a\n\nbody", "Host=a|", kGood, "body"},
        {"Host: a\n", "Host=a|", kEof, ""},
        {"Host: a", "Host=a|", kEof, ""},
        {"a:1\r\nb :\t 2 \t\r\n\r\nx", "a=1|b=2|", kGood, "x"},
        {"X: a\r\n b\r\n\t c \r\n\r\nx", "X=a;b;c|", kGood, "x"},
        {"X: a\n \nx", "X=a|", kGood, "x"},
        {"a b: c: d\n\n", "a b=c: d|", kGood, ""},
        {"a:\n\n", "a=|", kGood, ""},
        {"A: 1\na: 2\nB: 3\n\n", "A=2|B=3|", kGood, ""},
        {" \t\r\nx", "", kGood, "x"},
        {" X: a\n\n", "", kFail, "\n"},
        {"a: b\ngarbage\r\nc", "", kFail, "c"},
        {":value\n", "", kFail, ""},
        {" :value\n", "", kFail, ""},
        {"a:b\n c", "a=b;c|", kEof, ""},
        {"", "", kEof | kFail, ""},
        {std::string("a:\0b\n\n", 6), std::string("a=\0b|", 5), kGood, ""},
        {"a:" + std::string(5000, 'x') + "\n\nx", "a=" + std::string(5000, 'x') + "|", kGood, "x"},
    };
    for (const Case& c : cases) {
        for (const std::size_t step : {0U, 1U, 2U, 3U, 7U, 9999U}) {
            PiecewiseSource source(c.text, step);
            std::istream stream(&source);
            stream.exceptions(kFail & ~c.state);  // not even for a moment
            MessageHeader header;
            header.setParam("old", "x");
            stream >> header;
            EXPECT_EQ(listed(header), c.params) << c.text << step;
            EXPECT_EQ(stream.rdstate(), c.state) << c.text << step;
            stream.clear();
            EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), c.rest) << c.text << step;
        }
    }
}

TEST(MessageHeaderTest, Writes) {
    MessageHeader header;
    header.setParam("b", "1");
    header.setParam("A", "x\r\ny");
    header.setParam("B", "2");
    std::ostringstream stream;
    stream << std::hex << header;
    EXPECT_EQ(stream.str(), "b: 2\r\nA: x\r\ny\r\n\r\n");
    stream.setstate(kEof);
    stream << header;
    EXPECT_EQ(stream.str().size(), 17U);
    MessageHeader checked;
    for (const auto& [name, value] : {std::pair<std::string, std::string>{"", "v"},
                                      {"a b", "v"},
                                      {"a:", "v"},
                                      {"a", "v\n"},
                                      {"a", "\rv"},
                                      {"a", {"\0", 1}}})
        EXPECT_FALSE(checked.setChecked(name, value));
    EXPECT_TRUE(checked.empty());
    EXPECT_TRUE(checked.setChecked("X-A", "a\xff\tb"));
    EXPECT_EQ(checked.getParam("x-a"), "a\xff\tb");
}

TEST(ParamBagTest, FindsAmongFewAndMany) {
    for (const int count : {3, 32, 33, 1000}) {
        Plexa::ParamBag bag;
        MessageHeader header;
        for (int round = 0; round < 2; ++round) {
            for (int i = 0; i < count; ++i) {
                bag.setParam("N" + std::to_string(i), std::to_string(i + round));
                header.setParam((round == 0 ? "N" : "n") + std::to_string(i), std::to_string(i + round));
            }
        }
        EXPECT_EQ(bag.params().size(), static_cast<std::size_t>(count));
        EXPECT_EQ(header.params().size(), static_cast<std::size_t>(count));
        EXPECT_EQ(header.params()[1].first, "N1");
        const std::string last = "n" + std::to_string(count - 1);
        EXPECT_EQ(header.getParam(last), std::to_string(count));
        EXPECT_FALSE(bag.hasParam(last));
        EXPECT_EQ(bag.getParam(last, "none"), "none");
        Plexa::ParamBag moved(std::move(bag));
        EXPECT_TRUE(bag.empty() && bag.params().empty() && !bag.hasParam("N1") && moved.hasParam("N1"));
        bag.setParam("N3", "z");
        bag = std::move(moved);
        EXPECT_TRUE(moved.empty() && !moved.hasParam("N3") && bag.hasParam("N2"));
        EXPECT_EQ(bag.params().size(), static_cast<std::size_t>(count));
        bag.clear();
        bag.setParam("N2", "x");
        EXPECT_FALSE(bag.hasParam("N1") || bag.empty());
        Plexa::ParamBag::Params params(5);
        bag.getParams(params);
        EXPECT_EQ(params, (Plexa::ParamBag::Params{{"N2", "x"}}));
    }
}

std::string shown(const Http::Version& version) {
    return version.name + "/" + std::to_string(version.major) + "." + std::to_string(version.minor);
}

TEST(HttpRecordsTest, ReadsRequestLines) {
    struct Case {
        std::string text, method, uri, version;
        std::ios_base::iostate state = kGood;
    };
    const Case cases[] = {{"GET /index.html HTTP/1.1\r\n", "GET", "/index.html", "HTTP/1.1"},
                          {"\r\n \t\n\n PUT \t/x  ABC/12.34 \r\n", "PUT", "/x", "ABC/12.34"},
                          {"GET /x\r\n", "GET", "/x", "HTTP/0.9"},
                          {"GET /x\n", "GET", "/x", "OLD/0.9"},
                          {"GET /x", "GET", "/x", "OLD/0.9", kEof},
                          {"GET\r\n", "GET", "", "OLD/0.0", kFail},
                          {"GET", "", "", "OLD/0.0", kFail},
                          {"GET /x HTTP/1.1 extra\n", "GET", "/x", "HTTP/1.1", kFail},
                          {"GET /x HTTP/1.a\n", "GET", "/x", "HTTP/1.0", kFail},
                          {"GET /x HTTP/1\n", "GET", "/x", "HTTP/1.9", kFail},
                          {"GET /x HTTP\n", "GET", "/x", "OLD/0.9", kFail},
                          {"\n\n", "", "", "OLD/0.0", kEof | kFail}};
    for (const Case& c : cases) {
        std::istringstream stream(c.text);
        Http::RequestLine line{"old", "old", {"OLD", 7, 7}};
        stream >> line;
        EXPECT_EQ(line.method, c.method) << c.text;
        EXPECT_EQ(line.uri, c.uri) << c.text;
        EXPECT_EQ(shown(line.version), c.version) << c.text;
        EXPECT_EQ(stream.rdstate(), c.state) << c.text;
    }
}

TEST(HttpRecordsTest, ReadsStatusLines) {
    struct Case {
        std::string text, phrase;
        unsigned long code;
        std::ios_base::iostate state = kGood;
    };
    const Case cases[] = {{"HTTP/1.0 200 OK\r\n", "OK", 200},
                          {" \r\n\n  HTTP/1.1\t404 \t Not  Found \t\r\n", "Not  Found", 404},
                          {"HTTP/1.0 200\r\n", "", 200},
                          {"HTTP/1.0 200", "", 200, kEof},
                          {"HTTP/1.0 100\n", "", 100},
                          {"HTTP/1.0 999 x\n", "x", 999},
                          {"HTTP/1.0 200OK\n", "", 200, kFail},
                          {"HTTP/1.0 99 X\n", "", 99, kFail},
                          {"HTTP/1.0 1000 X\n", "", 1000, kFail},
                          {"HTTP/1.0 x\n", "", 0, kFail},
                          {"HTTP/1.0200 OK\n", "", 200, kFail},
                          {"HTTP/1.0 \n", "", 0, kFail},
                          {"HTTP/1.0\n", "", 0, kFail},
                          {"HTTP 200\n", "", 0, kFail}};
    for (const Case& c : cases) {
        std::istringstream stream(c.text);
        Http::StatusLine line{{"OLD", 7, 7}, 7, "old"};
        stream >> line;
        EXPECT_EQ(line.phrase, c.phrase) << c.text;
        EXPECT_TRUE(c.state == kFail || line.code == c.code) << c.text;
        EXPECT_EQ(stream.rdstate(), c.state) << c.text;
    }
}

template <class Record>
std::string written(const Record& record, std::ios_base::iostate state = kGood) {
    std::ostringstream stream;
    stream << std::hex << record;
    EXPECT_EQ(stream.rdstate(), state);
    stream.setstate(kEof);
    const std::string text = stream.str();
    stream << record;
    EXPECT_EQ(stream.str(), text);
    return text;
}

TEST(HttpRecordsTest, Writes) {
    EXPECT_EQ(written(Http::RequestLine{"GET", "/p", {"HTTP", 1, 16}}), "GET /p HTTP/1.16\r\n");
    EXPECT_EQ(written(Http::RequestLine{"GET", "/path", {"HTTP", 0, 9}}), "GET /path\r\n");
    EXPECT_EQ(written(Http::RequestLine{"GET", "/", {"X", 0, 9}}), "GET / X/0.9\r\n");
    EXPECT_EQ(written(Http::StatusLine{{"HTTP", 1, 1}, 200, ""}), "HTTP/1.1 200 \r\n");
    EXPECT_EQ(written(Http::StatusLine{{"HTTP", 0, 9}, 2000, "OK"}), "");
    EXPECT_EQ(written(Http::StatusLine{{"HTTP", 1, 1}, 1000, "OK"}, kFail), "");
    Http::Request request;
    request.method = "PUT";
    request.uri = "/a?b";
    request.header.setParam("N", "v");
    request.body = std::string("\0b", 2);
    EXPECT_EQ(written(request), "PUT /a?b HTTP/1.1\r\nN: v\r\n\r\n" + request.body);
    request.version = {"HTTP", 0, 9};
    EXPECT_EQ(written(request), "PUT /a?b\r\n" + request.body);
    Http::Reply reply;
    reply.header = request.header;
    reply.body = request.body;
    reply.code = 404;
    reply.phrase = "No";
    EXPECT_EQ(written(reply), "HTTP/1.1 404 No\r\nN: v\r\n\r\n" + reply.body);
    reply.code = 1000;
    EXPECT_EQ(written(reply, kFail), "");
    reply.version.major = 0;
    EXPECT_EQ(written(reply), reply.body);
}

TEST(HttpRecordsTest, ReadsRequestsAndRepliesWithoutBodies) {
    std::istringstream stream(
        "GET /a?b=1&c=%41+?d HTTP/1.0\r\nN: v\r\n\r\nbodyGET /x?y\r\nHTTP/1.1 200 OK\nM: w\n\nrest");
    Http::Request request;
    request.body = "old";
    stream >> request;
    EXPECT_EQ(request.uri, "/a");
    EXPECT_EQ(listed(request.query), "b=1|c=A ?d|");
    EXPECT_EQ(listed(request.header), "N=v|");
    EXPECT_EQ(request.body, "");
    stream.ignore(4);
    stream >> request;
    EXPECT_EQ(request.uri + listed(request.query) + listed(request.header), "/xy=|");
    Http::Reply reply;
    stream >> reply;
    EXPECT_EQ(reply.code, 200U);
    EXPECT_EQ(listed(reply.header), "M=w|");
    EXPECT_EQ(stream.get(), 'r');
    std::istringstream cut("GET /a?b HTTP/1.0\r\nN: v\r\n");
    cut >> request;
    EXPECT_EQ(request.uri, "/a?b");  // the stream has ended: not split
    EXPECT_EQ(cut.rdstate(), kEof);
}

TEST(HttpRecordsTest, HeadsHaveLimits) {
    const auto read = [](const std::string& text) {
        std::istringstream stream(text);
        Http::Request request;
        stream >> request;
        EXPECT_TRUE(stream.good() || request.header.empty());
        return stream.good();
    };
    const std::string line = "GET / HTTP/1.1\r\n";
    const auto lines = [&](int count) {
        std::string text = line;
        for (int i = 0; i < count; ++i) text += "n" + std::to_string(i) + ": v\r\n";
        return text + "\r\n";
    };
    EXPECT_TRUE(read(line + "a: " + std::string(65532, 'x') + "\r\n\r\n"));
    EXPECT_FALSE(read(line + "a: " + std::string(65533, 'x') + "\r\n\r\n"));
    EXPECT_FALSE(read("GET /" + std::string(70000, 'x') + " HTTP/1.1\r\n\r\n"));
    EXPECT_TRUE(read(lines(255)));
    EXPECT_FALSE(read(lines(256)));
    std::string large = line;
    for (int i = 0; i < 5; ++i) large += std::to_string(i) + ":" + std::string(60000, 'x') + "\n";
    EXPECT_FALSE(read(large + "\n"));
    std::string blanks;
    for (int i = 0; i < 64; ++i) blanks += " \n";
    EXPECT_TRUE(read(blanks + line + "\r\n"));
    EXPECT_FALSE(read(blanks + "\n" + line + "\r\n"));
    Http::setMaxLine(0);
    Http::setMaxLines(0);
    Http::setMaxHeader(0);
    Http::setMaxBlankLines(0);
    EXPECT_TRUE(read(blanks + blanks + lines(1000) + large));
    EXPECT_TRUE(read(line + "a: " + std::string(1 << 20, 'x') + "\n\n"));
    Http::setMaxLine(Http::kDefaultMaxLine);
    Http::setMaxLines(Http::kDefaultMaxLines);
    Http::setMaxHeader(Http::kDefaultMaxHeader);
    Http::setMaxBlankLines(Http::kDefaultMaxBlankLines);
}

}  // namespace

#include "Process.h"

#include <tests/support/LoopbackPair.h>
#include <tests/support/PeerServers.h>
#include <tests/support/ScriptedServer.h>
#include <tests/support/SerialPair.h>
#include <tests/support/TestFolder.h>

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

constexpr char kOk[] =
    "HTTP/1.1 200 OK\r\nSet-Cookie: a\r\nset-cookie: b\r\nContent-Type: a/b\r\nContent-Length: 10\r\n\r\n";
constexpr char kDigits[] = "0123456789";
constexpr char kNothing[] = "(nothing)";

struct GetCase {
    const char* words;  ///< URL stands for that of the server
    std::string reply;
    int exitCode;
    std::string output, error;
    std::string before = kNothing, after = kNothing;  ///< what the file "out" has
    std::string request = "GET /a HTTP/1.1\r\n";
};

std::string notFound(const std::string& line = "404 Not Found") {
    return "HTTP/1.1 " + line + "\r\nContent-Length: 4\r\n\r\nnone";
}

std::string part(const std::string& range, const std::string& body) {
    return "HTTP/1.1 206 Partial\r\n" + range + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string unsatisfiable(const std::string& range) {
    return "HTTP/1.1 416 Out of it\r\nContent-Range: " + range + "\r\nContent-Length: 0\r\n\r\n";
}

std::string replaced(std::string text, const std::string& url) {
    return text.replace(text.find("URL"), 3, url);
}

std::string contentOf(const std::string& path) {
    return std::filesystem::exists(path) ? TestFolder::read(path) : kNothing;
}

void expectGet(const GetCase& expected) {
    const TestFolder folder;
    if (expected.before != kNothing) folder.write("out", expected.before);
    const ScriptedServer server({{expected.reply}});
    const std::string url = server.url("/a", "us%20er:secret@");
    ChildProcess process("env -C " + folder.path("") + " '" VARNEX_COMMAND "' get " + replaced(expected.words, url));
    EXPECT_EQ(process.rest(Process::Output), expected.output);
    const std::string error = process.rest(Process::Error);
    EXPECT_EQ(error.empty(), expected.error.empty()) << error;
    EXPECT_LE(std::count(error.begin(), error.end(), '\n'), 1) << error;
    EXPECT_THAT(error, HasSubstr(expected.error));
    EXPECT_THAT(error, Not(HasSubstr("secret")));
    EXPECT_EQ(process.wait(), expected.exitCode);
    EXPECT_EQ(contentOf(folder.path("out")), expected.after);
    EXPECT_THAT(server.requests(), testing::ElementsAre(HasSubstr(expected.request)));
}

}  // namespace

TEST(HttpGetTest, GivesTheReplyAndLeavesFilesAloneOnFailure) {
    const std::string whole = std::string(kOk) + kDigits;
    const GetCase cases[] = {
        {"URL", whole, 0, kDigits, "", kNothing, kNothing, "\r\nAuthorization: Basic dXMgZXI6c2VjcmV0\r\n"},
        {"URL --include", whole, 0, whole, ""},
        {"URL --head --include", whole, 0, kOk, ""},
        {"URL --head", whole, 0, "mime-type: a/b\nlength: 10\n", ""},
        {"URL -o out", whole, 0, "", "", "old content", kDigits},
        {"--header 'X-Trace:  1 2 ' --header 'X-Empty:' URL", whole, 0, kDigits, "", kNothing, kNothing,
         "X-Trace: 1 2\r\nX-Empty:\r\n"},
        {"URL -o out", notFound(), 1, "", "//us%20er:***@127.0.0.1:", "old", "old"},
        {"URL -o out", notFound("503 \x1B[2J"), 1, "", "/a\": 503 \\x1b[2J\n"},
        {"URL -o out", "HTTP/1.1 304 \r\n\r\n", 1, "", "/a\": 304 Not Modified\n", "old", "old"},
        {"URL --head", notFound(), 1, "", "/a\": 404 Not Found\n"},
        {"URL --include", notFound(), 1, notFound(), "/a\": 404 Not Found\n"},
        {"URL -o out", "", 1, "", "/a\": Empty reply from server\n", "old", "old"},
        {"URL -o out", std::string(kOk) + "01234", 1, "", "after 5 bytes; \"out\" is incomplete\n", "old", "01234"},
    };
    for (const GetCase& expected : cases) {
        SCOPED_TRACE(expected.words + (" " + expected.reply.substr(0, 20)));
        expectGet(expected);
    }
}

TEST(HttpGetTest, GoesOnWhereTheServerAllowsIt) {
    const std::string rest = "56789", range = "Range: bytes=5-\r\n";
    const GetCase cases[] = {
        {"URL -co out", part("Content-Range: bytes 5-9/10\r\n", rest), 0, "", "", "01234", kDigits, range},
        {"URL -co out", part("Content-Range: bytes 5-9/*\r\n", rest), 0, "", "", "01234", kDigits, range},
        {"URL -co out", std::string(kOk) + kDigits, 0, "", "", "xxxxx", kDigits, range},
        {"URL -co out", std::string(kOk) + kDigits, 0, "", "", kNothing, kDigits},
        {"URL -co out", unsatisfiable("bytes */5"), 0, "", "\"out\" is complete already", "01234", "01234", range},
        {"URL -co out", unsatisfiable("bytes */4"), 1, "", "416 Out of it", "01234", "01234", range},
        {"URL -co out", unsatisfiable(""), 1, "", "416 Out of it", "01234", "01234", range},
        {"URL -co out", part("Content-Range: bytes 4-9/10\r\n", rest), 1, "", "go on at byte 5,", "01234", "01234"},
        {"URL -co out", part("", rest), 1, "", "does not go on at byte 5,", "01234", "01234"},
        {"URL -co out", part("Content-Range: bytes 5-6/10\r\n", "56"), 1, "",
         "ended after 7 of 10 bytes; \"out\" is incomplete", "01234", "0123456"},
        {"URL -co out", notFound(), 1, "", "404 Not Found", "01234", "01234", range},
    };
    for (const GetCase& expected : cases) {
        SCOPED_TRACE(expected.reply.substr(0, 60));
        expectGet(expected);
    }
}

TEST(HttpGetTest, RefusesWhatMakesNoSense) {
    const std::pair<const char*, const char*> cases[] = {
        {"http://h --header X", "--header: is not of the form 'Name: value'"},
        {"http://h --header 'X Y: z'", "is not of the form"},
        {"http://h --header 'X: secret\r\nY: z'", "is not of the form"},
        {"http://h --header 'X: secret' --header 'x: z'", "--header: \"x\" is given more than once"},
        {"data:,a --header 'X: secret'", "--header: only http and https"},
        {"data:,a --include", "--include: only http and https"},
        {"http://h -c", "--continue requires --output"},
        {"http://h -co x --include", "--continue excludes --include"},
        {"http://h --stall-timeout -1", "is not a number from 0"},
        {"http://h --cacert /dev/none", "File does not exist: /dev/none"},
    };
    for (const auto& [words, expected] : cases) {
        Process process(std::string("get ") + words);
        const std::string error = process.rest(Process::Error);
        EXPECT_THAT(error, HasSubstr(expected)) << words;
        EXPECT_THAT(error, Not(HasSubstr("secret"))) << words;
        EXPECT_EQ(process.wait(), 2) << words;
    }
}

TEST(HttpGetTest, TellsWhyAServerIsNotReached) {
    for (const char* const scheme : {"http", "https", "ftp"}) {
        Process process("get " + std::string(scheme) + "://127.0.0.1:1/a");
        EXPECT_THAT(process.rest(Process::Error), HasSubstr("/a\": Failed to connect to 127.0.0.1 port "));
        EXPECT_EQ(process.wait(), 1);
    }
}

TEST(HttpGetTest, GoesOnWithServersOfOthers) {
    const TestFolder folder;
    folder.write("file", kDigits);
    Nginx::makeCertificate(folder);
    const FtpServer ftp(folder);
    const Nginx nginx(folder, "", "ssl");
    const std::string ftpUrl = ftp.url("ftp", "/file"), url = nginx.url("https", "/file"), digits = kDigits;
    const std::string trust = " --cacert " + folder.path("certificate");
    const std::tuple<std::string, std::string, int, std::string, const char*> cases[] = {
        {url + trust, "01234", 0, digits, ""},
        {url + trust, digits, 0, digits, "is complete already"},
        {url + trust, digits + "x", 1, digits + "x", "416 Requested Range Not Satisfiable"},
        {url, "01234", 1, "01234", "certificate"},
        {ftpUrl, "01234", 0, digits, ""},
        {ftpUrl + "\\;type=a", "xx", 0, digits, ""},
        {ftpUrl, digits, 0, digits, "is complete already"},
        {ftpUrl, digits + "x", 1, digits + "x", "beyond file size"},
        {ftp.url("ftp", "/none"), "01234", 1, "01234", "/none\": "},
    };
    for (const auto& [words, before, exitCode, after, expected] : cases) {
        folder.write("out", before);
        Process process("get " + words + " -co " + folder.path("out"));
        EXPECT_THAT(process.rest(Process::Error), HasSubstr(expected));
        EXPECT_EQ(process.wait(), exitCode) << words;
        EXPECT_EQ(TestFolder::read(folder.path("out")), after) << words;
    }
}

TEST(HttpGetTest, GivesBytesAtOnceAndEndsByASignalAsOthersDo) {
    const ScriptedServer server({{std::string(kOk) + "01234", ScriptedServer::Hold}});
    Process process("get " + server.url());
    EXPECT_EQ(process.text(Process::Output, '4'), "0123");
    EXPECT_EQ(process.wait(SIGINT), -SIGINT);
}

TEST(HttpGetTest, ProgressGoesOnWhileTheServerStalls) {
    SerialPair pair;
    const TestFolder folder;
    folder.write("out", "01");
    const ScriptedServer server(
        {{"HTTP/1.1 206 \r\nContent-Range: bytes 2-9/10\r\nContent-Length: 8\r\n\r\n234", ScriptedServer::Hold}});
    Process process("get " + server.url() + " -co " + folder.path("out") + " 2>" + pair.line->getPort());
    std::string shown;
    const auto refreshes = [&shown] { return std::ranges::count(shown, '\r'); };
    const auto hasRefreshed = [&] { return shown.find(" 5 B of 10 B") != std::string::npos && refreshes() >= 5; };
    while (!hasRefreshed() && pair.master->waitForData(20000) == Varnex::Receiver::WaitData)
        shown += received(*pair.master);
    EXPECT_THAT(shown, HasSubstr(" 20 % [###             ] 2 B of 10 B, 0 B/s\r"));
    EXPECT_THAT(shown, HasSubstr(" 50 % [########        ] 5 B of 10 B, "));
    EXPECT_GE(refreshes(), 5);
    EXPECT_EQ(process.wait(SIGTERM), -SIGTERM);
    EXPECT_EQ(TestFolder::read(folder.path("out")), "01234");
}

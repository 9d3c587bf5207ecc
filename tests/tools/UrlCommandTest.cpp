#include "Process.h"

#include <tests/support/LoopbackPair.h>
#include <tests/support/ScriptedScheme.h>
#include <tests/support/SerialPair.h>
#include <tests/support/TestFolder.h>
#include <tools/varnex/Failure.h>
#include <tools/varnex/TransferStatus.h>
#include <tools/varnex/UrlSource.h>

#include <gmock/gmock.h>

#include <filesystem>

#include <sys/ioctl.h>

using namespace VarnexTool;

TEST(TransferStatusTest, TellsWhatIsKnown) {
    const std::pair<TransferStatus, const char*> cases[] = {
        {{1536, -1, 2.5 * 1024 * 1024}, "1.5 KiB, 2.5 MiB/s"},
        {{0, 10, 0}, "  0 % [                ] 0 B of 10 B, 0 B/s"},
        {{999, 1000, 0.01}, " 99 % [############### ] 999 B of 1000 B, 0 B/s, 1:40 left"},
        {{1024, 8848, 1}, " 11 % [#               ] 1.0 KiB of 8.6 KiB, 1 B/s, 2:10:24 left"},
        {{12, 10, 4}, "100 % [################] 12 B of 10 B, 4 B/s, 0:00 left"},
        {{5, 10, 4, true}, " 50 % [########        ] 5 B of 10 B, stalled"},
        {{5, -1, 4, true}, "5 B, stalled"},
        {{0, 0, 0}, "100 % [################] 0 B of 0 B, 0 B/s"},
    };
    for (const auto& [status, expected] : cases) EXPECT_EQ(status.text(), expected);
}

namespace {

std::string readAll() {
    std::string all;
    try {
        UrlSource source("broken:a");
        source.open();
        for (std::string_view block; !(block = source.next()).empty();) all += block;
        return std::to_string(all.size());
    } catch (const Failure& failure) {
        return std::to_string(all.size()) + " " + failure.what();
    }
}

}  // namespace

TEST(UrlSourceTest, TellsATornOrShortResourceFromAWholeOne) {
    const ScriptedScheme broken("broken");
    const std::string block(65536, 'x');
    const std::pair<ResourceScript, const char*> cases[] = {
        {{-1, block + "x"}, "65537"},
        {{5, "hello"}, "5"},
        {{10, "hello"}, "5 \"broken:a\": ended after 5 of 10 bytes"},
        {{-1, block, "torn"}, "65536 \"broken:a\": torn after 65536 bytes"},
        {{-1, "", ""}, "0 \"broken:a\": broken off after 0 bytes"},
        {{-1, "", "", false}, "0 \"broken:a\": cannot be opened"},
    };
    for (const auto& [source, expected] : cases) {
        script = source;
        EXPECT_EQ(readAll(), expected);
    }
}

TEST(UrlCommandTest, PrintsOrSaysInOneLineWhatIsWrong) {
    const TestFolder folder;
    folder.write("a b", "hello");
    const std::tuple<const char*, int, const char*, const char*> cases[] = {
        {"get 'a b'", 0, "hello", ""},
        {"get 'a b' -o out", 0, "", ""},
        {"get 'a b' --head", 0, "mime-type: unknown\nlength: 5\n", ""},
        {"get data:text/x,a --head", 0, "mime-type: text/x\nlength: 1\n", ""},
        {"get 'zip:data:;base64,UEsDBAoAAAAAAAAAAAAAAAAABQAAAAUAAAABAAAAYWhlbGxvUEsBAgAACgAAAAAAAAAAAAAA"
         "AAAFAAAABQAAAAEAAAAAAAAAAAAAAAAAAAAAAGFQSwUGAAAAAAEAAQAvAAAAJAAAAAAA!/a'",
         1, "hello", "Invalid zip file after 5 bytes"},
        {"get none -o none", 1, "", "\"none\": Open error - cannot open file"},
        {"get 'x\x1By:z'", 1, "", "\"x\\x1by:z\": unknown scheme \"x\\x1by\" (known: cg, data, "},
        {"get ' '", 1, "", "the URL is blank"},
        {"get 'a b' >/dev/full", 1, "", "cannot write to the standard output: No space left on device"},
        {"get 'a b' -o /dev/full", 1, "", "No space left on device; \"/dev/full\" is incomplete"},
        {"get 'a b' -o .", 1, "", "cannot open \".\" for writing: Is a directory"},
        {"get 'a b' -o ''", 1, "", "the name of the output file is empty"},
        {"get 'a b' -o './a b'", 1, "", "while reading it"},
        {"url 'http://u:p@H:1/a?q#f' http://H/", 0,
         "scheme: http\nuser: u\npassword: p\nhost: H\nport: 1\npath: /a\nquery: q#\nfragment: f\nwell-formed: yes\n"
         "resolved: http://u:p@H:1/a?q##f\nrelative: http://u:p@H:1/a?q##f\n",
         ""},
        {"url ' ../x y' http://h/a/b/c --json", 0,
         R"({"path":"../x y","wellFormed":false,"resolved":"http://h/a/x%20y","relative":"../x%20y"})"
         "\n",
         ""},
        {"url foo:bar --json", 1,
         R"({"scheme":"foo","path":"bar","wellFormed":true})"
         "\n",
         "unknown scheme \"foo\""},
        {"url http://h:x", 1, "scheme: http\nhost: h\nport: 0\nwell-formed: no\n", "Parse error - invalid port"},
        {"url a ftp://h", 1, "path: a\nwell-formed: yes\n", "\"ftp://h\": this is no URL of the scheme \"ftp\""},
    };
    for (const auto& [words, exitCode, output, expected] : cases) {
        ChildProcess process("env -C " + folder.path("") + " '" VARNEX_COMMAND "' " + std::string(words));
        EXPECT_EQ(process.rest(Process::Output), output) << words;
        const std::string error = process.rest(Process::Error);
        EXPECT_EQ(std::count(error.begin(), error.end(), '\n'), exitCode) << error;
        EXPECT_THAT(error, testing::HasSubstr(expected)) << words;
        EXPECT_EQ(process.wait(), exitCode) << words;
    }
    const std::string name = "'" + folder.path("a b") + "'";
    EXPECT_EQ(Process("get " + name + " >>" + name).wait(), 1) << "it would never end";
    EXPECT_EQ(TestFolder::read(folder.path("out")) + TestFolder::read(folder.path("a b")), "hellohello");
    EXPECT_FALSE(std::filesystem::exists(folder.path("none")));
}

TEST(UrlCommandTest, ProgressFitsTheTerminalAndIsClearedInTheEnd) {
    SerialPair pair;
    const winsize size{24, 12, 0, 0};
    ASSERT_EQ(::ioctl(pair.master->getDescriptor(), TIOCSWINSZ, &size), 0);
    const std::string terminal = pair.line->getPort();
    EXPECT_EQ(Process("get data:,a --quiet -o /dev/null 2>" + terminal).wait(), 0);
    EXPECT_EQ(Process("get data:,content >" + terminal + " 2>" + terminal).wait(), 0);
    EXPECT_EQ(Process("get data:,a -o /dev/null 2>" + terminal).wait(), 0);
    std::string shown;
    while (pair.master->waitForData(100) == Varnex::Receiver::WaitData) shown += received(*pair.master);
    EXPECT_THAT(shown, testing::StartsWith("content  0 % [    \r\x1B[K"));
    EXPECT_THAT(shown, testing::EndsWith("\r\x1B[K"));
}

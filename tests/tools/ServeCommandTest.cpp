#include "Process.h"

#include <tests/support/PeerServers.h>

#include <gmock/gmock.h>

/// `varnex serve` of a folder, with the URL of that.
struct FolderServing : Process {
    FolderServing(const TestFolder& folder, const std::string& options)
        : Process("serve " + folder.path("") + " --port 0 " + options) {
        const std::string first = text(Error);
        EXPECT_THAT(first, testing::StartsWith("serving \"" + folder.path("") + "\" at http"));
        url = first.substr(first.rfind(' ') + 1);
    }
    std::string url;
};

TEST(ServeCommandTest, ServesAFolderInEachMode) {
    const TestFolder folder;
    Nginx::makeCertificate(folder);
    folder.write("a.html", "content");
    for (const std::string mode : {"", "--polled ", "--tls certificate key ", "--polled --tls certificate key "}) {
        std::string options = mode;
        for (const std::string name : {" certificate", " key"})
            if (const std::size_t at = options.find(name); at != std::string::npos)
                options.replace(at, name.size(), " " + folder.path(name.substr(1)));
        FolderServing serving(folder, options + "--user u --password p --listing --log");
        const std::string curl = "curl -s --max-time 20 -u u:p --cacert " + folder.path("certificate") + " ";
        EXPECT_EQ(ChildProcess(curl + serving.url + "a.html").rest(ChildProcess::Output), "content") << mode;
        EXPECT_THAT(serving.text(ChildProcess::Error), testing::HasSubstr("\"GET /a.html HTTP/1.1\" 200 7 ")) << mode;
        EXPECT_THAT(ChildProcess(curl + serving.url).rest(ChildProcess::Output), testing::HasSubstr("./a.html"))
            << mode;
        ChildProcess stranger("curl -s -o /dev/null -w '%{http_code}' -k " + serving.url);
        EXPECT_EQ(stranger.rest(ChildProcess::Output), "401") << mode;
        EXPECT_EQ(serving.wait(SIGTERM), 0) << mode;
    }
}

TEST(ServeCommandTest, SaysInOneLineWhyItDoesNotServe) {
    const TestFolder folder;
    const std::pair<std::string, const char*> cases[] = {
        {folder.path("missing"), "Cannot open folder"},
        {folder.path("") + " --tls /dev/null /dev/null", "Cannot use certificate"},
        {folder.path("") + " --host 192.0.2.1", "Cannot open server"},
        {folder.path("") + " --user u", "--user"},
    };
    for (const auto& [words, message] : cases) {
        Process process("serve " + words);
        EXPECT_THAT(process.text(ChildProcess::Error), testing::HasSubstr(message)) << words;
        EXPECT_EQ(process.rest(ChildProcess::Error), "") << words;
        EXPECT_NE(process.wait(), 0) << words;
    }
}

#pragma once

#include <Varnex/transport/UniqueFd.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

/// The varnex command as a process of its own. Killed, when it still runs, by the destructor.
class Process {
public:
    enum Stream { Output = STDOUT_FILENO, Error = STDERR_FILENO };

    explicit Process(std::vector<std::string> words) {
        words.insert(words.begin(), VARNEX_COMMAND);
        std::vector<char*> argv;
        for (std::string& word : words) argv.push_back(word.data());
        argv.push_back(nullptr);
        Varnex::UniqueFd writeEnds[3];
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        for (Stream stream : {Output, Error}) {
            int ends[2];
            EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
            ends_[stream] = Varnex::UniqueFd(ends[0]);
            writeEnds[stream] = Varnex::UniqueFd(ends[1]);
            ::posix_spawn_file_actions_adddup2(&actions, ends[1], stream);
        }
        EXPECT_EQ(::posix_spawn(&id_, argv[0], &actions, nullptr, argv.data(), environ), 0);
        ::posix_spawn_file_actions_destroy(&actions);
    }
    ~Process() {
        if (id_ > 0) signal(SIGKILL), wait();
    }

    void signal(int number) { EXPECT_EQ(::kill(id_, number), 0); }

    /// The next line without its end; empty at the end of the stream and after 20 silent seconds.
    std::string line(Stream stream) {
        std::string text;
        for (char byte; next(stream, byte) && byte != '\n';) text += byte;
        return text;
    }

    /// All that is left of the stream.
    std::string rest(Stream stream) {
        std::string text;
        for (char byte; next(stream, byte);) text += byte;
        return text;
    }

    /// The exit code, or minus the signal that ended it.
    int wait() {
        int status = 0;
        EXPECT_GT(::waitpid(std::exchange(id_, -1), &status, 0), 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    bool next(Stream stream, char& byte) {
        pollfd polled{ends_[stream].get(), POLLIN, 0};
        return ::poll(&polled, 1, 20000) == 1 && ::read(polled.fd, &byte, 1) == 1;
    }

    pid_t id_ = -1;
    Varnex::UniqueFd ends_[3];
};

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

    /// `words`: the arguments, each after one space but the first.
    explicit Process(std::string words) {
        std::vector<char*> argv{program_.data()};
        if (!words.empty()) argv.push_back(words.data());
        for (char& c : words)
            if (c == ' ') c = '\0', argv.push_back(&c + 1);
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
        if (id_ > 0) wait(SIGKILL);
    }

    /// The next line without its end, or the text up to another character; ends with the stream or 20 silent seconds.
    std::string text(Stream stream, char end = '\n') {
        std::string text;
        pollfd polled{ends_[stream].get(), POLLIN, 0};
        for (char byte; ::poll(&polled, 1, 20000) == 1 && ::read(polled.fd, &byte, 1) == 1 && byte != end;)
            text += byte;
        return text;
    }
    std::string rest(Stream stream) { return text(stream, '\0'); }

    /// The exit code, or minus the signal that ended it, after a signal sent to it (0: none).
    int wait(int signal = 0) {
        int status = 0;
        EXPECT_EQ(::kill(id_, signal), 0);
        EXPECT_GT(::waitpid(std::exchange(id_, -1), &status, 0), 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    std::string program_ = VARNEX_COMMAND;
    pid_t id_ = -1;
    Varnex::UniqueFd ends_[3];
};

#pragma once

#include <gtest/gtest.h>

#include <cerrno>
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

    explicit Process(std::vector<std::string> arguments) {
        std::vector<char*> argv{program_.data()};
        for (std::string& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        int pipes[3][2];
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        for (Stream stream : {Output, Error}) {
            EXPECT_EQ(::pipe2(pipes[stream], O_CLOEXEC), 0);
            ::posix_spawn_file_actions_adddup2(&actions, pipes[stream][1], stream);
            ends_[stream] = pipes[stream][0];
        }
        EXPECT_EQ(::posix_spawn(&id_, program_.c_str(), &actions, nullptr, argv.data(), environ), 0);
        ::posix_spawn_file_actions_destroy(&actions);
        for (Stream stream : {Output, Error}) ::close(pipes[stream][1]);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process() {
        if (id_ > 0) signal(SIGKILL), wait();
        for (Stream stream : {Output, Error}) ::close(ends_[stream]);
    }

    void signal(int number) { EXPECT_EQ(::kill(id_, number), 0); }

    /// The next line without its end; empty at the end of the stream and after 20 silent seconds.
    std::string line(Stream stream) {
        std::string& text = texts_[stream];
        std::size_t end;
        while ((end = text.find('\n')) == std::string::npos)
            if (!more(stream)) return {};
        const std::string first = text.substr(0, end);
        text.erase(0, end + 1);
        return first;
    }

    /// All that is left of the stream.
    std::string rest(Stream stream) {
        while (more(stream)) continue;
        return std::exchange(texts_[stream], {});
    }

    /// The exit code, or minus the signal that ended it.
    int wait() {
        int status = 0;
        while (::waitpid(std::exchange(id_, -1), &status, 0) < 0 && errno == EINTR) continue;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    bool more(Stream stream) {
        pollfd polled{ends_[stream], POLLIN, 0};
        if (::poll(&polled, 1, 20000) != 1) return false;
        char bytes[4096];
        const ssize_t n = ::read(ends_[stream], bytes, sizeof bytes);
        if (n > 0) texts_[stream].append(bytes, static_cast<std::size_t>(n));
        return n > 0;
    }

    std::string program_ = VARNEX_COMMAND;
    pid_t id_ = -1;
    int ends_[3] = {};
    std::string texts_[3];
};

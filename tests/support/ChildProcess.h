#pragma once

#include <Varnex/transport/UniqueFd.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

/// A command as a process of its own. Killed, when it still runs, by the destructor.
class ChildProcess {
public:
    enum Stream { Output = STDOUT_FILENO, Error = STDERR_FILENO };

    /// `words`: the program and its arguments, as a shell reads them.
    explicit ChildProcess(const std::string& words) {
        const std::string command = "exec " + words;
        int ends[3][2];
        for (Stream stream : {Output, Error}) EXPECT_EQ(::pipe2(ends[stream], O_CLOEXEC), 0);
        id_ = ::fork();
        for (Stream stream : {Output, Error}) {
            if (id_ == 0) ::dup2(ends[stream][1], stream);
            ::close(ends[stream][1]);
            ends_[stream] = Varnex::UniqueFd(ends[stream][0]);
        }
        if (id_ == 0) ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr), ::_exit(127);
    }
    ~ChildProcess() {
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
    pid_t id_ = -1;
    Varnex::UniqueFd ends_[3];
};

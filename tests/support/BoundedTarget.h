#pragma once

#include <algorithm>
#include <streambuf>
#include <string>

/// A stream buffer that takes `room` characters and then refuses.
class BoundedTarget : public std::streambuf {
public:
    explicit BoundedTarget(std::size_t room) : room_(room) {}
    std::string text;
    bool throws = false;
    int syncs = 0;

protected:
    int_type overflow(int_type c) override {
        const char one = traits_type::to_char_type(c);
        return xsputn(&one, 1) == 1 ? traits_type::not_eof(c) : traits_type::eof();
    }
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        if (throws) throw 1;
        const std::size_t taken = std::min(static_cast<std::size_t>(n), room_ - text.size());
        text.append(s, taken);
        return static_cast<std::streamsize>(taken);
    }
    int sync() override { return ++syncs, 0; }

private:
    std::size_t room_;
};

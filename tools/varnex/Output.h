#pragma once

#include <Varnex/transport/UniqueFd.h>

#include <string>
#include <string_view>

namespace VarnexTool {

/// Where bytes go: the standard output, or a file, which is made, or emptied where nothing is kept. Failures throw
/// `Failure`, also when nobody reads the pipe any more.
class Output {
public:
    /// The standard output for an empty `file`. `kept`: bytes of the file to go on behind, which must be all that it
    /// has.
    explicit Output(const std::string& file, long long kept = 0);

    void write(std::string_view bytes);
    /// After the last byte: some file systems tell only then that there is no room.
    void close();

    [[nodiscard]] bool isTerminal() const;

private:
    void checkSize(long long size) const;
    [[noreturn]] void fail(int error) const;
    [[nodiscard]] int descriptor() const;

    std::string name_;       // for messages
    Varnex::UniqueFd file_;  // none: the standard output
};

}  // namespace VarnexTool

#include <Varnex/events/Event.h>

#include <Varnex/transport/PrintLine.h>

#include <cstdio>
#include <memory>

namespace Varnex {

namespace {

constexpr int kValuesPerLine = 8;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// The format wants each byte widened from a signed char, so that 128 to 255 print as 4294967168 to 4294967295, and a
/// line feed before each line, so that the text begins with an empty one.
std::string decimalText(const char* bytes, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        if (i % kValuesPerLine == 0) text += '\n';
        char value[16];
        std::snprintf(value, sizeof value, "%3u ", static_cast<unsigned int>(static_cast<signed char>(bytes[i])));
        text += value;
    }
    return text + '\n';
}

}  // namespace

void Event::dump(const char* fileName, bool binary) {
    const std::string name = fileName == nullptr ? "" : fileName;
    char bytes[kFirstBufferSize];
    const Buffer buffer(*this, bytes, sizeof bytes);
    std::unique_ptr<std::FILE, CloseFile> file(std::fopen(name.c_str(), "we"));
    const int length = write();
    printOutputPart("Dump " + std::to_string(length) + " bytes to " + name + (binary ? "(bin)" : "(ascii)") + " ... ");
    if (file == nullptr) {
        printOutput("failed");
    } else {
        const std::string text =
            binary ? std::string(_buffer, static_cast<std::size_t>(length)) : decimalText(_buffer, length);
        std::fwrite(text.data(), 1, text.size(), file.get());
        file.reset();
        printOutput("done");
    }
}

}  // namespace Varnex

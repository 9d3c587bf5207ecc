// base64 [-d]: writes standard input as Base64 to standard output, in lines of 76 characters; with -d the other way.
#include <Varnex/streams/obase64decodestream.h>
#include <Varnex/streams/obase64encodestream.h>

#include <iostream>
#include <string_view>

namespace {

// Whether all was read and written. The flush closes the coded text; the stream's end would do so too, untold.
bool copyInputTo(std::ostream& out) {
    char block[16384];
    while (std::cin.read(block, sizeof block), std::cin.gcount() > 0) out.write(block, std::cin.gcount());
    return !std::cin.bad() && out.flush();
}

bool encodeInput() {
    if (std::cin.peek() == std::char_traits<char>::eof()) return !std::cin.bad();  // no text, no line end
    std::cout.width(76);  // the length of a line, until the next `<<` to std::cout takes and resets it
    Varnex::obase64encodestream encoded(std::cout, "\n");
    return copyInputTo(encoded) && std::cout.put('\n');  // not `<<`, which would fill the line up to the width
}

// What is not Base64 is skipped, and all that follows the first "=". To have bad text refused, read it whole and call
// `Varnex::decodeBase64`.
bool decodeInput() {
    Varnex::obase64decodestream decoded(std::cout);
    return copyInputTo(decoded);
}

}  // namespace

int main(int argc, char** argv) {
    const bool isDecoder = argc == 2 && argv[1] == std::string_view("-d");
    if (argc > 1 && !isDecoder) {
        std::cerr << "usage: base64 [-d]\n";
        return 2;
    }
    std::ios_base::sync_with_stdio(false);
    const bool works = isDecoder ? decodeInput() : encodeInput();
    return works && std::cout.flush() ? 0 : 1;
}

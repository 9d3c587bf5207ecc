// Needs what the library is made with besides threads, and finds the tables that its parts fill before main.
#include <Varnex/transport/Serial.h>
#include <Varnex/url/URL.h>
#include <Varnex/url/URLMemory.h>
#include <Varnex/url/inflatebuf.h>

#include <sstream>

int main() {
    const Varnex::URL url = Varnex::URL::resolve({}, "data:image/png;base64,AAAA");
    const Varnex::inflatebuf buffer(std::make_unique<std::istringstream>("x"));
    return url && url->read2mem().getSize() == 3 && Varnex::Serial().setBaudRate(115200) ? 0 : 1;
}

#include <Varnex/streams/Trim.h>

namespace Varnex {

void trim(std::string& s) {
    s.erase(s.find_last_not_of(ws) + 1);  // npos + 1 is 0: nothing but white space
    s.erase(0, s.find_first_not_of(ws));
}

}  // namespace Varnex

// Lets the outside program need what a serial line is made with.
#include <Varnex/transport/Serial.h>

[[maybe_unused]] static const bool known = Varnex::Serial().setBaudRate(115200);

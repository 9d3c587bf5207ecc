#pragma once

#include <Varnex/Export.h>

namespace Varnex {

// Icons of 16 x 16 pixels, whole files of the type "image/x-icon", to be served with a `WebPageStatic`.

VARNEX_API extern const unsigned char tarvolo16x16_ico[1150];  ///< a blue eye
VARNEX_API extern const unsigned char kesvro16x16_ico[1150];   ///< three connected balls
VARNEX_API extern const unsigned char wolbrin16x16_ico[1150];  ///< a green tile with a cross

}  // namespace Varnex

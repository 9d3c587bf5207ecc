#pragma once

/// Marks what the library exports; everything else stays hidden.
#define ZENDRO_API __attribute__((visibility("default")))

#pragma once

/* Marks what the library exports; everything else stays hidden. */
#define VARNEX_API __attribute__((visibility("default")))

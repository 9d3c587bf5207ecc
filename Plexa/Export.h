#pragma once

/// Marks what the library exports; everything else stays hidden.
#define PLEXA_API __attribute__((visibility("default")))

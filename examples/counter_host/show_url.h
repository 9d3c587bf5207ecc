#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* Prints type, length and content of what `text` is where `base`, a URL, is the base. False, and a line that tells why:
   it cannot be opened or read. */
int show_url(const char* base, const char* text);

#ifdef __cplusplus
}
#endif

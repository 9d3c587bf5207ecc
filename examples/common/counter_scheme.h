#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* "counter:N" URLs, with N up to 999999: a text of the lines 1 to N. Relative to one "+M" counts M further. */
void counter_scheme_register(void);
void counter_scheme_unregister(void);

#ifdef __cplusplus
}
#endif

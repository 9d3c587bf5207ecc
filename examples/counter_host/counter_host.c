/* counter_host URL [TEXT...]: a program in C with a URL scheme of its own, "counter:"; shows the URL, and what each
   text is relative to it. */
#include "../common/counter_scheme.h"
#include "show_url.h"

#include <stdio.h>

int main(int argc, char** argv) {
    int i, works = 1;
    if (argc < 2) {
        fputs("usage: counter_host URL [TEXT...]\n", stderr);
        return 2;
    }
    counter_scheme_register();
    for (i = 1; works && i < argc; ++i) works = show_url(argv[1], argv[i]);
    counter_scheme_unregister();
    return works ? 0 : 1;
}

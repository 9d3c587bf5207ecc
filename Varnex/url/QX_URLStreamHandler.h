#pragma once

#include <Varnex/Export.h>

/* The C interface for programs that add URL schemes of their own; plain C89. The guide: docs/adding-a-scheme.md.

   All memory that crosses it, records and texts, comes from malloc(3) and ends in free(3). */

#ifdef __cplusplus
extern "C" {
#endif

typedef struct QX_URL QX_URL;
typedef struct QX_URLStream QX_URLStream;
typedef struct QX_URLStreamHandler QX_URLStreamHandler;

/* A URL of such a scheme, owned by the library. Texts end in NUL; those that are absent are null. */
struct QX_URL {
    char* scheme;
    char* userInfo; /* the user, or user:password */
    char* host;
    int port; /* -1: none */
    char* path;
    char* query;
    char* fragment;
    QX_URLStreamHandler* handler;
};

/* A scheme. Any of the functions may be null. It outlives its registration and all URLs of the scheme. */
struct QX_URLStreamHandler {
    void* userData; /* yours; never read by the library */

    int (*getDefaultPort)(void);

    /* Fills `url` from the `length` bytes at `text`, what follows the scheme's ":"; begin at `start`, which is 0. For a
       relative text `url` holds what the base has: replace what differs by new texts, and free nothing, for the old
       ones are the base's. Leave `scheme` and `handler` alone. Other than 0: failure, there is no URL then.
       Null: the library splits the text, and merges the path when there is no authority. */
    int (*parseURL)(QX_URL* url, const char* text, int start, int length);

    /* A new text, which the library frees. Null, the function or the text: the library prints the parts. */
    char* (*toString)(QX_URL* url);

    /* A new record, or null when it cannot be opened. The library calls its `close` and then frees the record. */
    QX_URLStream* (*open)(QX_URL* url);
};

/* An open resource. Any of the functions may be null; without `read` it is empty. */
struct QX_URLStream {
    void* userData; /* yours; never read by the library */

    void (*start)(QX_URLStream* stream); /* once, before anything else */

    int (*getContentLength)(QX_URLStream* stream); /* bytes; -1: not known */

    /* A new text, which the library frees, or null. Null function: the library goes by the path. */
    char* (*getMimeType)(QX_URLStream* stream);

    /* Up to `count` bytes; how many, 0 at the end. */
    int (*read)(QX_URLStream* stream, void* destination, int count);

    void (*close)(QX_URLStream* stream); /* frees what the record points to, not the record */
};

/* Registers `scheme`, in any case, in place of an earlier handler or a scheme of the library, and gives `handler`. With
   a null argument nothing is registered. Not while another thread creates URLs. */
VARNEX_API QX_URLStreamHandler* QX_URLStreamHandlerFactory_registerHandler(const char* scheme,
                                                                           QX_URLStreamHandler* handler);

/* Takes it out when it is this one that is registered; a scheme of the library does not come back. URLs of the scheme
   go on. Not while another thread creates URLs. */
VARNEX_API void QX_URLStreamHandlerFactory_unregisterHandler(const char* scheme, QX_URLStreamHandler* handler);

#ifdef __cplusplus
}
#endif

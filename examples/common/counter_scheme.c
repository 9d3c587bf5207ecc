#include "counter_scheme.h"

#include <Varnex/url/QX_URLStreamHandler.h>

#include <stdio.h>
#include <stdlib.h>

#define MAX_NUMBER 999999
#define TEXT_SIZE 16

typedef struct Counter {
    int last;             /* how many lines there are */
    int line;             /* the one in `text`; 0: none yet */
    char text[TEXT_SIZE]; /* with its line end */
    const char* next;     /* what of it was not read */
} Counter;

/* False after the last line. */
static int has_more(Counter* counter) {
    if (*counter->next != '\0') return 1;
    if (counter->line == counter->last) return 0;
    sprintf(counter->text, "%d\n", ++counter->line);
    counter->next = counter->text;
    return 1;
}

static int read_lines(QX_URLStream* stream, void* destination, int count) {
    Counter* counter = stream->userData;
    char* out = destination;
    int n = 0;
    while (n < count && has_more(counter)) out[n++] = *counter->next++;
    return n;
}

static int get_length(QX_URLStream* stream) {
    const Counter* counter = stream->userData;
    int length = counter->last; /* the line ends */
    int power;
    for (power = 1; power <= counter->last; power *= 10) length += counter->last - power + 1;
    return length;
}

static char* get_type(QX_URLStream* stream) {
    char* text = malloc(sizeof "text/plain");
    (void)stream;
    if (text != NULL) sprintf(text, "text/plain");
    return text; /* the library frees it */
}

/* The library frees the record itself. */
static void close_stream(QX_URLStream* stream) {
    free(stream->userData);
}

static QX_URLStream* open_url(QX_URL* url) {
    QX_URLStream* stream = calloc(1, sizeof *stream); /* `start` stays null */
    Counter* counter = calloc(1, sizeof *counter);
    if (stream == NULL || counter == NULL) {
        free(stream);
        free(counter);
        return NULL;
    }
    counter->last = atoi(url->path);
    counter->next = counter->text;
    stream->userData = counter;
    stream->getContentLength = get_length;
    stream->getMimeType = get_type;
    stream->read = read_lines;
    stream->close = close_stream;
    return stream;
}

/* -1: it is none, or too large. */
static int parse_number(const char* text, const char* end) {
    int number = 0;
    if (text == end) return -1;
    for (; text < end; ++text) {
        if (*text < '0' || *text > '9') return -1;
        number = 10 * number + (*text - '0');
        if (number > MAX_NUMBER) return -1;
    }
    return number;
}

/* The path is the number; a base has one already. */
static int parse_url(QX_URL* url, const char* text, int start, int length) {
    const char* begin = text + start;
    int number, further = 0;
    if (start < length && *begin == '+') {
        if (url->path == NULL) return -1;
        further = atoi(url->path);
        ++begin;
    }
    number = parse_number(begin, text + length);
    if (number < 0 || number + further > MAX_NUMBER) return -1;
    url->path = malloc(TEXT_SIZE); /* the old one is the base's */
    if (url->path == NULL) return -1;
    sprintf(url->path, "%d", number + further);
    return 0;
}

/* The library itself would print "counter://5". */
static char* print_url(QX_URL* url) {
    char* text = malloc(sizeof "counter:" + TEXT_SIZE);
    if (text != NULL) sprintf(text, "counter:%s", url->path);
    return text;
}

static QX_URLStreamHandler handler = {NULL, NULL, parse_url, print_url, open_url};

void counter_scheme_register(void) {
    QX_URLStreamHandlerFactory_registerHandler("counter", &handler);
}

void counter_scheme_unregister(void) {
    QX_URLStreamHandlerFactory_unregisterHandler("counter", &handler);
}

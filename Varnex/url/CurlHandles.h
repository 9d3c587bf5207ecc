#pragma once

#include <memory>

#include <curl/curl.h>

namespace Varnex {

// Private to the library: libcurl's objects with their owners.

struct CurlDeleter {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct CurlMultiDeleter {
    void operator()(CURLM* handle) const { curl_multi_cleanup(handle); }
};
struct CurlListDeleter {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

using CurlHandle = std::unique_ptr<CURL, CurlDeleter>;
using CurlMultiHandle = std::unique_ptr<CURLM, CurlMultiDeleter>;
using CurlList = std::unique_ptr<curl_slist, CurlListDeleter>;

}  // namespace Varnex

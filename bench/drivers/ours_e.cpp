// Splitting URLs. `ours` fills one `Components` again and again; `ours-object` makes a new one for each.
#include "bench.hpp"

#include <Varnex/url/URLImpl.h>

#include <fstream>
#include <string>
#include <vector>

namespace {

using Varnex::URLImpl;
using Urls = std::vector<std::string>;

struct Parts {
    std::string scheme, host, port, path, query, fragment;
};

/// Splits each URL into `parts`, or into a new object where that is null.
void split(const Urls& urls, URLImpl::Components* parts) {
    for (const std::string& url : urls) {
        URLImpl::Components own;
        URLImpl::Components& out = parts == nullptr ? own : *parts;
        URLImpl::parseURL(url, out);
        bench::keep(out.path.data());
    }
}

void readOut(const Urls& urls, URLImpl::Components& parts, Parts& out) {
    for (const std::string& url : urls) {
        URLImpl::parseURL(url, parts);
        out = {parts.scheme, parts.host,  parts.port < 0 ? "" : std::to_string(parts.port),
               parts.path,   parts.query, parts.fragment};
        bench::keep(out.path.data());
    }
}

template <class Function>
void figure(const char* peer, const char* metric, const Urls& urls, Function function) {
    const double seconds = bench::time_median(function) / static_cast<double>(urls.size());
    bench::emit("E", peer, metric, seconds * 1e9, "ns/url");
}

}  // namespace

int main(int argc, char** argv) {
    const bench::Args args{argc, argv};
    bench::guard(120);
    std::ifstream file(args.get("urls", "data/urls.txt"));
    bench::check(bool(file), "cannot open the file of URLs (--urls=FILE)");
    Urls all, http;
    for (std::string line; std::getline(file, line);) {
        const std::size_t tab = line.find('\t');
        all.push_back(line.substr(tab + 1));
        if (line.compare(0, tab, "http") == 0 || line.compare(0, tab, "ipv6") == 0) http.push_back(all.back());
    }
    bench::check(all.size() == 1000 && http.size() == 640, "the file of URLs");

    URLImpl::Components parts;
    for (const std::string& url : http) {
        URLImpl::parseURL(url, parts);
        bench::check(parts.scheme.starts_with("http") && !parts.host.empty(), url.c_str());
    }
    Parts out;
    bench::emit("E", "ours", "accepted_all", static_cast<double>(all.size()), "of 1000");  // none is ever refused
    figure("ours", "parse_all", all, [&] { split(all, &parts); });
    figure("ours", "parse_http", http, [&] { split(http, &parts); });
    figure("ours", "get_http", http, [&] { readOut(http, parts, out); });
    figure("ours-object", "parse_all", all, [&] { split(all, nullptr); });
    figure("ours-object", "parse_http", http, [&] { split(http, nullptr); });
}

#include <Varnex/web/WebPageDirectory.h>

#include <Varnex/protocols/MimeTypes.h>
#include <Varnex/transport/IOException.h>
#include <Varnex/url/URLImpl.h>
#include <Varnex/web/ConfinedFile.h>
#include <Varnex/web/FileVersion.h>
#include <Varnex/web/FolderListing.h>
#include <Varnex/web/Gzip.h>
#include <Varnex/web/HtmlText.h>
#include <Varnex/web/WebClient.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include <sys/stat.h>

namespace Varnex {

namespace {

constexpr long long kReadAtOnce = 65536;  // bytes that go out with the head
constexpr unsigned long kMinGzip = 512;

void fail(ProtocolHTTP::Reply& reply, unsigned long code) {
    reply.code = code;
    reply.header.setParam("Content-Type", "text/html");
    reply.body = htmlPage(std::to_string(code) + " " + ProtocolHTTP::getStatusPhrase(code));
}

/// What browsers need to know beside the types of the library's table.
constexpr std::pair<const char*, const char*> kWebTypes[] = {
    {".txt", "text/plain"},        {".md", "text/markdown"}, {".csv", "text/csv"},    {".json", "application/json"},
    {".mjs", "text/javascript"},   {".xml", "text/xml"},     {".webp", "image/webp"}, {".mp4", "video/mp4"},
    {".wasm", "application/wasm"}, {".woff2", "font/woff2"}, {".webm", "video/webm"}, {".gltf", "model/gltf+json"},
};

std::string typeOf(const std::string& name) {
    const std::string& type = MimeTypes::identify(name);
    if (!type.empty()) return type;
    for (const auto& [extension, webType] : kWebTypes)
        if (name.ends_with(extension)) return webType;
    return "application/octet-stream";
}

/// "%" and what else is not a name is left as it is, and so is not found.
bool isServed(const std::string& path) {
    if (path.find_first_of(std::string("\\\0", 2)) != std::string::npos) return false;
    return !path.starts_with(".") && path.find("/.") == std::string::npos;
}

/// Narrows the body down to the range that is asked for, if any. False: it lies outside.
bool selectRange(const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply, FileBody& body) {
    const long long size = body.length;
    const auto range = parseRange(request.header.getParam("Range"), size);
    if (!range || request.method != "GET") return true;
    const std::string all = "/" + std::to_string(size);
    reply.header.setParam("Content-Range", "bytes *" + all);
    if (range->length == 0) return false;
    const std::string last = std::to_string(range->offset + range->length - 1);
    reply.header.setParam("Content-Range", "bytes " + std::to_string(range->offset) + "-" + last + all);
    reply.code = 206;
    body.offset = range->offset;
    body.length = range->length;
    return true;
}

std::string readAll(FileBody& body) {
    std::string content(static_cast<std::size_t>(body.length), '\0');
    std::size_t size = 0;
    for (long n = 1; n > 0 && size < content.size(); size += static_cast<std::size_t>(std::max(n, 0L)))
        n = body.read(content.data() + size, content.size() - size);
    content.resize(size);
    return content;
}

}  // namespace

/// What a path leads to.
struct WebPageDirectory::Target {
    std::string name;  // in the folder, decoded
    std::string path;  // of the request
    UniqueFd fd;
    struct stat status {};

    [[nodiscard]] bool open(const FolderFd& folder) {
        fd = openBeneath(folder, name);
        return fd.isOpen() && ::fstat(fd.get(), &status) == 0;
    }
    [[nodiscard]] bool isFolder() const { return S_ISDIR(status.st_mode); }
    [[nodiscard]] bool isFile() const { return S_ISREG(status.st_mode); }
};

WebPageDirectory::WebPageDirectory(std::string prefix, const std::string& folder)
    : prefix_(std::move(prefix)), folder_(std::make_shared<FolderFd>(folder)) {
    if (folder_->get() < 0) throw IOException("Cannot open folder " + folder, errno);
}

WebPageDirectory::~WebPageDirectory() = default;

WebPageDirectory* WebPageDirectory::clone() const {
    return new WebPageDirectory(*this);
}

bool WebPageDirectory::create(WebClient* client, const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply) {
    if (request.method != "GET" && request.method != "HEAD") {
        fail(reply, 405);
        reply.header.setParam("Allow", "GET, HEAD");
        return true;
    }
    URLImpl::Components url;
    URLImpl::parseURL(request.uri, url);
    Target target;
    target.path = url.path;
    if (!locate(url.path, target.name) || !target.open(*folder_))
        fail(reply, 404);
    else if (target.isFolder())
        serveFolder(client, request, reply, target);
    else
        serveFile(client, request, reply, target);
    return true;
}

/// False: nothing that is served.
bool WebPageDirectory::locate(const std::string& path, std::string& name) const {
    if (!path.starts_with(prefix_)) return false;
    name = path.substr(prefix_.size());
    URLImpl::decodeUnsafeCharacters(name);
    return isServed(name);
}

void WebPageDirectory::serveFolder(WebClient* client, const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply,
                                   Target& target) const {
    if (!target.path.ends_with('/')) {
        reply.code = 301;
        reply.header.setParam("Location", "./" + target.path.substr(target.path.rfind('/') + 1) + "/");
        return;
    }
    Target index;
    index.name = target.name + "/" + index_;
    if (!index_.empty() && index.open(*folder_) && index.isFile()) return serveFile(client, request, reply, index);
    if (!listing_) return fail(reply, 404);
    reply.body = folderListing(target.fd, target.path, kMaxListing);
    if (reply.body.empty()) return fail(reply, 404);
    reply.code = 200;
    reply.header.setParam("Content-Type", "text/html");
}

void WebPageDirectory::serveFile(WebClient* client, const ProtocolHTTP::Request& request, ProtocolHTTP::Reply& reply,
                                 Target& target) const {
    if (!target.isFile()) return fail(reply, 404);
    const std::string type = typeOf(target.name);
    const auto size = static_cast<unsigned long>(target.status.st_size);
    const bool mayZip = maxGzip_ > 0 && size >= kMinGzip && size <= maxGzip_ && Gzip::isWorthwhile(type);
    const bool zips = mayZip && !request.header.hasParam("Range") && Gzip::isAccepted(request.header);
    FileVersion version(target.status);
    if (zips) version.setEncoding("gzip");
    version.describe(reply.header);
    if (mayZip) reply.header.setParam("Vary", "Accept-Encoding");
    reply.header.setParam("Cache-Control", maxAge_ == 0 ? "no-cache" : "max-age=" + std::to_string(maxAge_));
    if (version.isKnown(request.header)) {
        reply.code = 304;
        return;
    }
    reply.code = 200;
    reply.header.setParam("Content-Type", type);
    reply.header.setParam("X-Content-Type-Options", "nosniff");
    FileBody body{std::move(target.fd), 0, target.status.st_size};
    if (!zips) {
        reply.header.setParam("Accept-Ranges", "bytes");
        if (version.allowsRange(request.header) && !selectRange(request, reply, body)) return fail(reply, 416);
    }
    if (client != nullptr && body.length > kReadAtOnce && !zips) return client->setFile(std::move(body));
    reply.body = readAll(body);
    std::string compressed;
    if (!zips || !Gzip::compress(reply.body, compressed)) return;
    reply.body = std::move(compressed);
    reply.header.setParam("Content-Encoding", "gzip");
}

}  // namespace Varnex

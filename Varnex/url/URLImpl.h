#pragma once

#include <Varnex/Export.h>

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>

namespace Varnex {

/// A parsed URL, one class a scheme: prints itself, resolves relative texts against itself and opens as a stream.
///
/// Objects are made by `create` and shared through `URL` handles, which belong to one thread at a time: the count of
/// handles is a plain integer. Everything here throws `URLImpl::Exception`. Texts come from anywhere and parse or throw
/// in linear time; what may be opened is the host's decision, see `URLPolicy`.
class VARNEX_API URLImpl {
public:
    class Exception;
    class Protocol;
    class Object;
    class Stream;
    class Memory;
    class File;

    /// The parts of a URL text, as they are written except for the scheme.
    struct Components {
        /// What `flags` consists of.
        enum Flag : unsigned { Scheme = 1, Authority = 2, Path = 4, Query = 8, Fragment = 16 };

        unsigned flags = 0;
        std::string scheme;  ///< lower case, percent-decoded
        std::string host;    ///< an IPv6 literal keeps its brackets
        int port = -1;       ///< -1: none
        std::string user;
        std::string password;
        std::string path;
        std::string query;  ///< with a "#" at its end when a fragment follows: see `parseQuery`
        std::string fragment;
    };

    /// The new object has one reference, which is the caller's.
    explicit URLImpl(std::string fragment);
    URLImpl(const URLImpl&) = delete;
    URLImpl& operator=(const URLImpl&) = delete;

    // The order of the virtual operations is binary interface: append, never reorder.
    virtual ~URLImpl();

    [[nodiscard]] virtual std::string getScheme() const = 0;
    /// The whole URL. An object that is parsed from it need not be equal: see `parseQuery`.
    [[nodiscard]] virtual std::string toString() const = 0;
    /// The shortest text that stands for this URL where `base` is the base, as far as the scheme knows one; otherwise
    /// the whole.
    [[nodiscard]] virtual std::string toRelativeString(const URLImpl& base) const = 0;

    /// A stream of the resource, owned by the caller; it may block, also while reading. Throws.
    [[nodiscard]] virtual Stream* open() const = 0;
    /// The whole resource, up to the policy's size and less than 2 GiB. Throws, also when less than the announced
    /// length arrives.
    [[nodiscard]] virtual Memory read2mem() const;
    /// The resource as a local file: a new one below the system's folder for temporary files, which only this user can
    /// read, or the file itself where there is one. Throws as `read2mem` does, and when that cannot be written.
    [[nodiscard]] virtual File read2disk() const;

    /// A new URL: `text` resolved against this one, or null where the scheme says so. Throws on a parse error.
    [[nodiscard]] virtual URLImpl* createRelative(const std::string& text) const = 0;

    [[nodiscard]] virtual std::string getHost() const;
    [[nodiscard]] virtual int getPort() const;
    [[nodiscard]] virtual std::string getPath() const;
    /// The last segment of the path.
    [[nodiscard]] virtual std::string getName() const;
    /// A new URL of the "directory" of this one, or null.
    [[nodiscard]] virtual URLImpl* getBase() const;
    [[nodiscard]] virtual bool refersToSameFileAs(const URLImpl& other) const;
    [[nodiscard]] virtual bool refersToSameDomainAs(const URLImpl& other) const;

    [[nodiscard]] const std::string& getFragment() const { return fragment; }

    /// A new URL for `text` without the white space around it: of its scheme, or resolved against `base` when it has
    /// none. Null: blank, or of an unknown scheme. Throws on a parse error of a known one.
    [[nodiscard]] static URLImpl* create(const std::string& text, const URLImpl& base);

    /// Splits any text; nothing is refused. With a port that is no number, `port` is what stands before the error.
    static void parseURL(const std::string& text, Components& out);

    // The steps of `parseURL`. Each takes a leading piece off `rest`, stores it, emptied when there is none, and tells
    // whether there was one.

    /// Up to the first of ":/?#" when that is ":" and not the first; decoded and in lower case. Not checked further:
    /// the "c" of "c:/dir" is one.
    static bool parseScheme(std::string& rest, std::string& scheme);
    /// "//" and what follows up to the first of "/?#", which may be nothing.
    static bool parseAuthority(std::string& rest, std::string& authority);
    /// Up to the first "@", divided at its first ":". Always true.
    static bool parseUserPassword(std::string& authority, std::string& user, std::string& password);
    /// The port is what follows the last ":" outside brackets, decoded and read as strtol(3) does, but limited to the
    /// range of an int; -1 without ":", 0 when nothing follows. False: it is not wholly a number.
    static bool parseHostPort(std::string& hostport, std::string& host, int& port);
    /// Up to the first "?" or "#". False: empty.
    static bool parsePath(std::string& rest, std::string& path);
    /// "?" and what follows. Before a fragment the query keeps the "#" as its last character; that is wanted. So do not
    /// compare URLs by parsing what they print, and cut a query at its "#" before it goes into a request.
    static bool parseQuery(std::string& rest, std::string& query);
    static bool parseFragment(std::string& rest, std::string& out);

    /// Replaces every byte by "%" and two digits, lower case, but letters, digits, "$-_.!~*'()," and those of
    /// `allowed`.
    static void encodeUnsafeCharacters(std::string& text);
    static void encodeUnsafeCharacters(std::string& text, const std::string& allowed);

    /// Replaces "%" and two digits by the byte, in one pass, up to the position `end`, which counts decoded bytes;
    /// leaves "%00", the bytes in `keep` and what has no digits. The position of the "%" where it stopped, or npos.
    static std::size_t decodeUnsafeCharacters(std::string& text, std::size_t end = std::string::npos);
    static std::size_t decodeUnsafeCharacters(std::string& text, const std::string& keep,
                                              std::size_t end = std::string::npos);

    /// Merges `path` with the directory of `basePath` unless it begins with "/", and removes "//", "./" and "x/../".
    /// A final "." or ".." stays. Always true.
    static bool makePathAbsolute(std::string& path, const std::string& basePath);
    /// The way from `basePath` to `path`. False, and nothing changes: one of them does not begin with "/".
    static bool makePathRelative(std::string& path, const std::string& basePath);

    /// Characters with a meaning of their own in a path: neither encoded nor decoded there.
    static const std::string _specialChars;

protected:
    /// What `open` and whatever replaces `read2mem` and `read2disk` begin with: throws when the policy refuses.
    void checkPolicy() const;
    /// What `open` gives; throws when the policy refuses a resource of that size. -1: not known.
    [[nodiscard]] static Stream* makeStream(std::unique_ptr<std::streambuf> buffer, std::string mimeType,
                                            long long contentLength);

    std::string fragment;

private:
    friend class URL;

    mutable int refCount = 1;
};

/// What everything of the URL framework throws. Not a `std::exception`, nor a `Varnex::Exception`.
class VARNEX_API URLImpl::Exception {
public:
    explicit Exception(std::string message);
    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;
    virtual ~Exception();

    /// The message, which may be empty; lives as long as the exception.
    [[nodiscard]] virtual const char* what() const;

private:
    std::string message_;
};

}  // namespace Varnex

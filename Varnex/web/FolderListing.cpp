#include <Varnex/web/FolderListing.h>

#include <Varnex/protocols/ProtocolHTTP.h>
#include <Varnex/url/URLImpl.h>
#include <Varnex/web/HtmlText.h>

#include <algorithm>
#include <memory>
#include <tuple>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace Varnex {

namespace {

struct Entry {
    bool isFile;
    std::string name;
    long long size;
    long modified;

    bool operator<(const Entry& other) const { return std::tie(isFile, name) < std::tie(other.isFile, other.name); }
};

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

using Folder = std::unique_ptr<DIR, FolderCloser>;

Folder openAgain(const UniqueFd& folder) {
    UniqueFd own(::openat(folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    Folder opened(own.isOpen() ? ::fdopendir(own.get()) : nullptr);
    if (opened != nullptr) own.release();
    return opened;
}

std::vector<Entry> entriesOf(DIR& folder, unsigned max) {
    std::vector<Entry> entries;
    while (const dirent* const found = ::readdir(&folder)) {
        struct stat status {};
        const std::string name = static_cast<const char*>(found->d_name);
        if (name.starts_with(".") || entries.size() == max) continue;
        if (::fstatat(::dirfd(&folder), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) continue;
        if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) continue;
        entries.push_back({S_ISREG(status.st_mode), name, status.st_size, status.st_mtim.tv_sec});
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

std::string rowOf(const Entry& entry) {
    std::string link = entry.name, shown = htmlEscaped(entry.name);
    URLImpl::encodeUnsafeCharacters(link);
    const std::string end = entry.isFile ? "" : "/";
    return "<TR><TD><A HREF=\"./" + htmlEscaped(link) + end + "\">" + shown + end + "</A></TD><TD ALIGN=RIGHT>" +
           (entry.isFile ? std::to_string(entry.size) : "") + "</TD><TD>" +
           ProtocolHTTP::createTimestamp(entry.modified) + "</TD></TR>\n";
}

}  // namespace

std::string folderListing(const UniqueFd& folder, const std::string& path, unsigned max) {
    const Folder opened = openAgain(folder);
    if (opened == nullptr) return {};
    const std::string title = htmlEscaped(path);
    std::string page = "<!DOCTYPE html>\n<HTML>\n  <HEAD>\n    <META CHARSET=\"utf-8\">\n    <TITLE>" + title +
                       "</TITLE>\n  </HEAD>\n  <BODY>\n    <H1>" + title + "</H1>\n<TABLE CELLPADDING=4>\n" +
                       "<TR><TD><A HREF=\"../\">../</A></TD><TD></TD><TD></TD></TR>\n";
    for (const Entry& entry : entriesOf(*opened, max)) page += rowOf(entry);
    return page + "</TABLE>\n  </BODY>\n</HTML>\n";
}

}  // namespace Varnex

#pragma once

#include <Varnex/Export.h>

#include <map>
#include <string>

namespace Varnex {

/// The MIME type of a file name, by its extension.
///
/// The table is one for the process, read-only and complete before `main`; any thread may look up. An object only keeps
/// it alive: the library has one itself.
class VARNEX_API MimeTypes {
public:
    MimeTypes();
    MimeTypes(const MimeTypes&) : MimeTypes() {}
    MimeTypes& operator=(const MimeTypes&) = default;
    /// The last object takes the table with it, unless there was a look-up.
    ~MimeTypes();

    /// The type for what follows the last "." of a name or path, upper or lower case; an empty text when it is not in
    /// the table or there is no extension. A compressed scene has the type of its plain form. The text lives as long as
    /// the process.
    [[nodiscard]] static const std::string& identify(const std::string& path);

private:
    using Map = std::map<std::string, std::string, std::less<>>;

    static void keep();

    static Map* _suffixMap;
};

}  // namespace Varnex

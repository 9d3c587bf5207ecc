#include <Varnex/protocols/MimeTypes.h>

#include <Varnex/transport/LowerCase.h>

#include <array>
#include <atomic>
#include <cstddef>

namespace Varnex {

namespace {

struct Type {
    const char* name;
    std::array<const char*, 5> extensions;  // null: no more
};

constexpr Type kTypes[] = {
    {"text/html", {"html", "htm"}},
    {"application/pdf", {"pdf"}},
    {"text/css", {"css"}},
    {"image/svg+xml", {"svg", "svgz"}},
    {"image/bmp", {"bmp", "dib", "rle"}},
    {"image/x-emf", {"emf"}},
    {"image/vnd.fpx", {"fpx", "fpix"}},
    {"image/gif", {"gif"}},
    {"image/tiff", {"tif", "tiff"}},
    {"image/x-icon", {"ico"}},
    {"image/jpeg", {"jpg", "jpeg", "jpe", "jfif"}},
    {"image/jpeg2000", {"jp2"}},
    {"image/png", {"png"}},
    {"image/x-macpaint", {"pntg", "pnt", "mac"}},
    {"image/pict", {"pict", "pic", "pct"}},
    {"image/x-photoshop", {"psd"}},
    {"image/x-quicktime", {"qtif", "qti"}},
    {"image/x-sgi", {"rgb", "rgba", "sgi", "bw"}},
    {"image/x-targa", {"tga", "targa"}},
    {"image/x-wmf", {"wmf"}},
    {"image/x-3dtiff", {"3dtif", "3dtiff"}},
    {"image/x-invivo", {"vol", "vol3"}},
    {"image/x-den", {"den"}},
    {"image/x-mtf", {"mtf"}},
    {"image/x-con", {"con"}},
    {"video/x-mng", {"mng"}},
    {"video/mpeg", {"mpg", "mpeg", "mpe"}},
    {"video/mpeg2", {"mpv2", "mp2v"}},
    {"video/quicktime", {"mov", "qt"}},
    {"video/x-msvideo", {"avi"}},
    {"video/x-cam", {"cam"}},
    {"audio/x-wav", {"wav"}},
    {"audio/x-mpeg", {"mpga", "mpa", "abs", "mp2", "mp3"}},
    {"audio/x-mpeg2", {"mp2a", "mpa2"}},
    {"audio/x-cdda", {"cda", "cdr"}},
    {"audio/basic", {"au", "snd"}},
    {"audio/x-aiff", {"aif", "aiff", "aifc"}},
    {"application/ogg", {"ogg"}},
    {"model/x3d+vrml", {"x3dv", "x3dvz"}},
    {"model/vrml", {"wrl", "wrz", "vrml", "anim"}},
    {"model/x3d+xml", {"x3d", "x3dz"}},
    {"application/x-morvel-engine+vrml", {"edv"}},
    {"application/x-morvel-engine+xml", {"edx"}},
    {"application/x-javascript", {"js"}},
    {"application/x-java", {"class"}},
    {"application/x-shader-glsl", {"glsl"}},
    {"application/x-shader-hlsl", {"hlsl"}},
    {"application/x-shader-cg", {"cg"}},
    {"application/x-zip", {"zip"}},
};

constinit std::atomic<int> users = 0;

// The library's own, from loading on.
const MimeTypes instance;

}  // namespace

constinit MimeTypes::Map* MimeTypes::_suffixMap = nullptr;

MimeTypes::MimeTypes() {
    if (users++ > 0) return;
    _suffixMap = new Map;
    for (const Type& type : kTypes)
        for (const char* const extension : type.extensions)
            if (extension != nullptr) _suffixMap->emplace(extension, type.name);
}

MimeTypes::~MimeTypes() {
    if (--users > 0) return;
    delete _suffixMap;
    _suffixMap = nullptr;
}

const std::string& MimeTypes::identify(const std::string& path) {
    struct Kept {
        MimeTypes table;  // there is one before our static objects then, and after
        std::string none;
    };
    static const Kept& kept = *new Kept;
    const std::size_t dot = path.find_last_of("./");
    if (dot == std::string::npos || path[dot] == '/') return kept.none;
    std::string extension = path.substr(dot + 1);
    makeLowerCase(extension);
    const auto entry = _suffixMap->find(extension);
    return entry == _suffixMap->end() ? kept.none : entry->second;
}

}  // namespace Varnex

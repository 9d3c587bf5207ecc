#pragma once

#include <Varnex/url/RegularFile.h>

#include <ext/stdio_filebuf.h>

#include <ios>

namespace Varnex {

// Private to the library.

/// The standard library's file buffer over a file that is open already, which it owns.
class FileBuf : public __gnu_cxx::stdio_filebuf<char> {
public:
    explicit FileBuf(RegularFile file) : stdio_filebuf(file.fd.release(), std::ios_base::in | std::ios_base::binary) {}
};

}  // namespace Varnex

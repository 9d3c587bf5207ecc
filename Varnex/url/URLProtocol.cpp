#include <Varnex/url/URLProtocol.h>

#include <Varnex/url/PercentCode.h>
#include <Varnex/url/URLData.h>
#include <Varnex/url/URLECMAscript.h>
#include <Varnex/url/URLFTP.h>
#include <Varnex/url/URLFile.h>
#include <Varnex/url/URLHTTP.h>
#include <Varnex/url/URLJavascript.h>
#include <Varnex/url/URLShaderCG.h>
#include <Varnex/url/URLShaderGLSL.h>
#include <Varnex/url/URLShaderHLSL.h>
#include <Varnex/url/URLURN.h>
#include <Varnex/url/URLZip.h>

#include <utility>

namespace Varnex {

constinit std::map<std::string, URLImpl::Protocol*>* URLImpl::Protocol::_protocols = nullptr;

// All of them here: in one source file they register in this order, and a static library that is asked for the look-up
// brings them along.
const std::string URLImpl::_specialChars = kSpecialCharacters;
URLImpl::Protocol URLData::_dataProtocol("data", &URLData::createAbsolute);
URLImpl::Protocol URLJavascript::_javascriptProtocol("javascript", &URLJavascript::createAbsolute);
URLImpl::Protocol URLJavascript::_vrmlscriptProtocol("vrmlscript", &URLJavascript::createAbsolute);
URLImpl::Protocol URLECMAscript::_ecmascriptProtocol("ecmascript", &URLECMAscript::createAbsolute);
URLImpl::Protocol URLShaderGLSL::_shaderGLSLProtocol("glsl", &URLShaderGLSL::createAbsolute);
URLImpl::Protocol URLShaderHLSL::_shaderHLSLProtocol("hlsl", &URLShaderHLSL::createAbsolute);
URLImpl::Protocol URLShaderCG::_shaderCGProtocol("cg", &URLShaderCG::createAbsolute);
URLImpl::Protocol URLFile::_fileProtocol("file", &URLFile::createAbsolute);
URLImpl::Protocol URLFTP::_ftpProtocol("ftp", &URLFTP::createAbsolute);
URLImpl::Protocol URLHTTP::_httpProtocol("http", &URLHTTP::createAbsolute);
URLImpl::Protocol URLHTTP::_httpsProtocol("https", &URLHTTP::createAbsolute);
URLImpl::Protocol URLURN::urnProtocol("urn", &URLURN::createAbsolute);
URLImpl::Protocol URLZip::zipProtocol("zip", &URLZip::createAbsolute);
URLImpl::Protocol URLZip::jarProtocol("jar", &URLZip::createAbsolute);
URLFile URLFile::_cwd;

URLImpl::Protocol::Protocol(std::string scheme, Factory factory) : scheme_(std::move(scheme)), factory_(factory) {
    if (_protocols == nullptr) _protocols = new std::map<std::string, Protocol*>;
    (*_protocols)[scheme_] = this;
}

URLImpl::Protocol::~Protocol() {
    if (_protocols == nullptr) return;
    _protocols->erase(scheme_);
    if (!_protocols->empty()) return;
    delete _protocols;
    _protocols = nullptr;
}

URLImpl* URLImpl::Protocol::createAbsolute(const std::string& scheme, const std::string& rest) const {
    return factory_ == nullptr ? nullptr : factory_(scheme, rest);
}

URLImpl::Protocol* URLImpl::Protocol::find(const std::string& scheme) {
    if (_protocols == nullptr) return nullptr;
    const auto entry = _protocols->find(scheme);
    return entry == _protocols->end() ? nullptr : entry->second;
}

std::vector<std::string> URLImpl::Protocol::getSchemes() {
    std::vector<std::string> schemes;
    if (_protocols == nullptr) return schemes;
    for (const auto& [scheme, protocol] : *_protocols) schemes.push_back(scheme);
    return schemes;
}

}  // namespace Varnex

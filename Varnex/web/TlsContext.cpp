#include <Varnex/web/TlsContext.h>

#include <Varnex/transport/Exception.h>
#include <Varnex/web/TlsWire.h>

#include <new>

#include <openssl/err.h>
#include <openssl/ssl.h>

namespace Varnex {

namespace {

[[noreturn]] void fail(const std::string& context) {
    char text[256] = "unknown error";
    if (const unsigned long error = ERR_get_error(); error != 0) ERR_error_string_n(error, text, sizeof text);
    ERR_clear_error();
    throw Exception(context + " (" + text + ")");
}

}  // namespace

void TlsContext::Deleter::operator()(ssl_ctx_st* context) const {
    SSL_CTX_free(context);
}

TlsContext::TlsContext(const std::string& certificate, const std::string& key)
    : context_(SSL_CTX_new(TLS_server_method())) {
    SSL_CTX* const context = context_.get();
    if (context == nullptr) fail("Cannot prepare encryption");
    SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
    SSL_CTX_set_options(context, SSL_OP_NO_RENEGOTIATION | SSL_OP_CIPHER_SERVER_PREFERENCE);
    SSL_CTX_set_mode(context,
                     SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER | SSL_MODE_RELEASE_BUFFERS);
    if (SSL_CTX_use_certificate_chain_file(context, certificate.c_str()) != 1) fail("Cannot use certificate");
    if (SSL_CTX_use_PrivateKey_file(context, key.c_str(), SSL_FILETYPE_PEM) != 1) fail("Cannot use key");
    if (SSL_CTX_check_private_key(context) != 1) fail("Cannot use key with certificate");
}

std::unique_ptr<Wire> TlsContext::accept(int fd) const {
    SSL* const ssl = SSL_new(context_.get());
    if (ssl == nullptr) throw std::bad_alloc();
    auto wire = std::make_unique<TlsWire>(ssl, fd);
    return wire;
}

}  // namespace Varnex

// OpenSSL's verification, set up once.
#include "VeltoShared/voice/TlsTrust.h"

#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <cstdlib>

namespace velto::TlsTrust {
namespace {

boost::asio::ssl::context make() {
    boost::asio::ssl::context context(boost::asio::ssl::context::tls_client);
    SSL_CTX* native = context.native_handle();
    SSL_CTX_set_min_proto_version(native, TLS1_2_VERSION);
    SSL_CTX_set_verify(native, SSL_VERIFY_PEER, nullptr);
    SSL_CTX_set_session_cache_mode(native, SSL_SESS_CACHE_OFF);
    // A missing directory or file means that nobody is trusted: connecting then fails and says so.
    SSL_CTX_set_default_verify_dir(native);
    // Nothing in this process changes the environment once threads run.
    const char* file = std::getenv("SSL_CERT_FILE"); // NOLINT(concurrency-mt-unsafe)
    if (file && *file)
        SSL_CTX_load_verify_file(native, file);
    ERR_clear_error();
    return context;
}

} // namespace

boost::asio::ssl::context& context() {
    static boost::asio::ssl::context shared = make();
    return shared;
}

bool expectHost(SSL* connection, const HostAddress& address) {
    std::string name = address.host;
    if (address.isLiteral)
        return X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(connection), name.c_str()) == 1;
    if (name.ends_with('.'))
        name.pop_back();
    SSL_set_hostflags(connection, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    return SSL_set_tlsext_host_name(connection, name.c_str()) == 1 &&
           SSL_set1_host(connection, name.c_str()) == 1;
}

std::string certificateProblem(const SSL* connection) {
    const long result = SSL_get_verify_result(connection);
    return result == X509_V_OK ? std::string() : X509_verify_cert_error_string(result);
}

} // namespace velto::TlsTrust

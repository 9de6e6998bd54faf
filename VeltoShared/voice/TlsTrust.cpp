// OpenSSL's verification, set up once.
#include "VeltoShared/voice/TlsTrust.h"

#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <cstdlib>

namespace velto::TlsTrust {
namespace {

std::string withoutFinalDot(std::string name) {
    if (name.ends_with('.'))
        name.pop_back();
    return name;
}

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

bool insist(X509_VERIFY_PARAM* rules, const HostAddress& address) {
    if (address.isLiteral)
        return X509_VERIFY_PARAM_set1_ip_asc(rules, address.host.c_str()) == 1;
    const auto name = withoutFinalDot(address.host);
    X509_VERIFY_PARAM_set_hostflags(rules, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    return X509_VERIFY_PARAM_set1_host(rules, name.c_str(), name.size()) == 1;
}

} // namespace

boost::asio::ssl::context& context() {
    static boost::asio::ssl::context shared = make();
    return shared;
}

bool share(SSL_CTX* foreign, const HostAddress& address) {
    SSL_CTX_set1_cert_store(foreign, SSL_CTX_get_cert_store(context().native_handle()));
    SSL_CTX_set_keylog_callback(foreign, nullptr);
    return insist(SSL_CTX_get0_param(foreign), address);
}

bool expectHost(SSL* connection, const HostAddress& address) {
    if (!insist(SSL_get0_param(connection), address))
        return false;
    return address.isLiteral ||
           SSL_set_tlsext_host_name(connection, withoutFinalDot(address.host).c_str()) == 1;
}

std::string certificateProblem(const SSL* connection) {
    const long result = SSL_get_verify_result(connection);
    return result == X509_V_OK ? std::string() : X509_verify_cert_error_string(result);
}

} // namespace velto::TlsTrust

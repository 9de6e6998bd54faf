// Certificates made with OpenSSL's X.509 interface.
#include "rehearsal/LocalAuthority.h"

#include <openssl/asn1.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <utility>

namespace velto {
namespace {

template <auto Free>
struct Freed {
    template <class T>
    void operator()(T* object) const {
        Free(object);
    }
};
using Key = std::unique_ptr<EVP_PKEY, Freed<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Freed<X509_free>>;
using Memory = std::unique_ptr<BIO, Freed<BIO_free_all>>;
using Extension = std::unique_ptr<X509_EXTENSION, Freed<X509_EXTENSION_free>>;
using Address = std::unique_ptr<ASN1_OCTET_STRING, Freed<ASN1_OCTET_STRING_free>>;

constexpr long kHour = 3600;

Key makeKey() {
    return Key(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256"));
}

std::string text(BIO* memory) {
    char* data = nullptr;
    const long size = BIO_get_mem_data(memory, &data);
    return size > 0 ? std::string(data, static_cast<std::size_t>(size)) : std::string();
}

std::string pem(X509* certificate) {
    const Memory memory(BIO_new(BIO_s_mem()));
    if (!memory || PEM_write_bio_X509(memory.get(), certificate) != 1)
        return {};
    return text(memory.get());
}

std::string pem(EVP_PKEY* key) {
    const Memory memory(BIO_new(BIO_s_mem()));
    if (!memory ||
        PEM_write_bio_PKCS8PrivateKey(memory.get(), key, nullptr, nullptr, 0, nullptr, nullptr) != 1)
        return {};
    return text(memory.get());
}

bool setSerial(X509* certificate) {
    unsigned char bytes[8];
    if (RAND_bytes(bytes, sizeof bytes) != 1)
        return false;
    std::uint64_t serial = 0;
    for (const unsigned char byte : bytes)
        serial = serial << 8 | byte;
    return ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), serial >> 1) == 1;
}

bool addExtension(X509* certificate, X509* issuer, int id, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, id, value.c_str()));
    return extension && X509_add_ext(certificate, extension.get(), -1) == 1;
}

Certificate makeUnsigned(EVP_PKEY* key, const std::string& commonName, X509* issuer) {
    Certificate certificate(X509_new());
    if (!certificate || X509_set_version(certificate.get(), X509_VERSION_3) != 1 ||
        !setSerial(certificate.get()))
        return nullptr;
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -kHour);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 24 * kHour);
    X509_NAME* subject = X509_get_subject_name(certificate.get());
    // A common name holds 64 characters; clients compare the alternative name.
    const std::string shown = commonName.substr(0, 64);
    X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(shown.data()),
                               static_cast<int>(shown.size()), -1, 0);
    X509_set_issuer_name(certificate.get(), issuer ? X509_get_subject_name(issuer) : subject);
    if (X509_set_pubkey(certificate.get(), key) != 1)
        return nullptr;
    return certificate;
}

/// What the configuration syntax of X509V3_EXT_conf cannot express is refused: a name with its separators.
bool isPlainName(const std::string& name) {
    return !name.empty() && name.find_first_of(",;@\n\r ") == std::string::npos;
}

} // namespace

struct LocalAuthority::Impl {
    Key key = makeKey();
    Certificate certificate;
};

LocalAuthority::LocalAuthority() : impl_(std::make_unique<Impl>()) {
    if (!impl_->key)
        return;
    Certificate made = makeUnsigned(impl_->key.get(), "Velto rehearsal authority", nullptr);
    if (made && addExtension(made.get(), made.get(), NID_basic_constraints, "critical,CA:TRUE,pathlen:0") &&
        addExtension(made.get(), made.get(), NID_key_usage, "critical,keyCertSign,cRLSign") &&
        addExtension(made.get(), made.get(), NID_subject_key_identifier, "hash") &&
        X509_sign(made.get(), impl_->key.get(), EVP_sha256()) > 0)
        impl_->certificate = std::move(made);
}

LocalAuthority::~LocalAuthority() = default;

std::string LocalAuthority::certificatePEM() const {
    return impl_->certificate ? pem(impl_->certificate.get()) : std::string();
}

LocalAuthority::Issued LocalAuthority::issue(std::string_view hostName) {
    const std::string host(hostName);
    X509* issuer = impl_->certificate.get();
    const Key key = makeKey();
    if (!issuer || !key || !isPlainName(host))
        return {};
    const Address address(a2i_IPADDRESS(host.c_str()));
    const std::string names = address ? "IP:" + host + ",DNS:" + host : "DNS:" + host;
    const Certificate made = makeUnsigned(key.get(), host, issuer);
    if (!made || !addExtension(made.get(), issuer, NID_basic_constraints, "critical,CA:FALSE") ||
        !addExtension(made.get(), issuer, NID_key_usage, "critical,digitalSignature") ||
        !addExtension(made.get(), issuer, NID_ext_key_usage, "serverAuth") ||
        !addExtension(made.get(), issuer, NID_subject_alt_name, names) ||
        !addExtension(made.get(), issuer, NID_authority_key_identifier, "keyid") ||
        X509_sign(made.get(), impl_->key.get(), EVP_sha256()) <= 0)
        return {};
    return {pem(made.get()), pem(key.get())};
}

} // namespace velto

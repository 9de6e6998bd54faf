// A throw-away certificate authority for servers on this computer; its keys live in memory only.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace velto {

/// A P-256 authority that is valid from an hour ago for one day. Blocking, no I/O. One thread at a time.
/// Every operation answers empty texts when OpenSSL refuses (no entropy, no memory).
class LocalAuthority {
  public:
    struct Issued {
        std::string certificatePEM; ///< the server's certificate alone; clients hold the authority's
        std::string keyPEM;         ///< unencrypted PKCS #8
    };

    LocalAuthority();
    ~LocalAuthority();
    LocalAuthority(const LocalAuthority&) = delete;
    LocalAuthority& operator=(const LocalAuthority&) = delete;

    /// What a client has to trust, for example as the file that SSL_CERT_FILE names.
    std::string certificatePEM() const;

    /// A certificate for a TLS server (RFC 5280). Its subject alternative name is `hostName`: a DNS name, or
    /// an address for an IPv4 or IPv6 literal (without brackets), which also gets the DNS form that old
    /// clients compare.
    Issued issue(std::string_view hostName);

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace velto

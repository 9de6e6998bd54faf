// Whom we trust in TLS: one context for every connection of the process.
#pragma once

#include "VeltoShared/voice/HostAddress.h"

#include <boost/asio/ssl/context.hpp>

#include <string>

namespace velto::TlsTrust {

/// Made at the first call, on any thread. Authorities come from the system's hashed directory, looked up one
/// by one when a certificate names them (reading the whole bundle would cost 20 ms), and from the file that
/// SSL_CERT_FILE names.
boost::asio::ssl::context& context();

/// Makes another library's connections trust the same authorities, insist on a certificate for the host, and
/// write their secrets nowhere, whatever SSLKEYLOGFILE says. False when OpenSSL refuses the name.
bool share(SSL_CTX* foreign, const HostAddress& address);

/// Makes a client connection ask for the host (RFC 6066, section 3) and insist on a certificate for it
/// (RFC 6125; RFC 5280 for an address). False when OpenSSL refuses the name.
bool expectHost(SSL* connection, const HostAddress& address);

/// What is wrong with the server's certificate; empty when that was not what failed.
std::string certificateProblem(const SSL* connection);

} // namespace velto::TlsTrust

// The certificate authority that this test process trusts.
#pragma once

#include "rehearsal/LocalAuthority.h"
#include "tests/support/TestComputer.h"

#include <cstdlib>
#include <fstream>

namespace velto::test {

/// The first call makes it known through SSL_CERT_FILE; it must come before the process's first connection
/// and while there is one thread.
inline LocalAuthority& trustedAuthority() {
    struct Trusted {
        Trusted() {
            const auto file = folder.path() / "authority.pem";
            std::ofstream(file) << authority.certificatePEM();
            ::setenv("SSL_CERT_FILE", file.c_str(), 1);
        }
        LocalAuthority authority;
        TemporaryFolder folder;
    };
    static Trusted trusted;
    return trusted.authority;
}

} // namespace velto::test

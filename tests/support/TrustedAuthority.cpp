// A temporary file with the authority's certificate, for as long as the process lives.
#include "tests/support/TrustedAuthority.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace velto::test {
namespace {

struct Trusted {
    Trusted() {
        std::ofstream(file) << authority.certificatePEM();
        ::setenv("SSL_CERT_FILE", file.c_str(), 1);
    }
    ~Trusted() { std::filesystem::remove(file); }
    Trusted(const Trusted&) = delete;
    Trusted& operator=(const Trusted&) = delete;

    LocalAuthority authority;
    std::filesystem::path file = std::filesystem::temp_directory_path() /
                                 ("velto-test-authority-" + std::to_string(::getpid()) + ".pem");
};

} // namespace

LocalAuthority& trustedAuthority() {
    static Trusted trusted;
    return trusted.authority;
}

} // namespace velto::test

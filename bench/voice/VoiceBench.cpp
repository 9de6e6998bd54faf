// The voice transport's cost: CPU time a message against a bare OpenSSL loop and against the providers' SDKs,
// start, memory, and base64 against memcpy.
#include "VeltoShared/core/BackgroundThreads.h"
#include "bench/voice/Parts.h"
#include "tests/support/TrustedAuthority.h"

#include <cstdio>

int main() {
    using namespace velto;
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    test::trustedAuthority();
    const BackgroundThreads background;
    bench::benchBase64();
    for (const auto provider : kAllVoiceProviders) {
        std::printf("-- %s\n", std::string(displayName(provider)).c_str());
        const bench::Service service(provider);
        const auto client = bench::benchInbound(service);
        bench::benchSdk(service, client);
        bench::benchOutbound(service);
        bench::benchStart(service);
        bench::benchMemory(service);
    }
}

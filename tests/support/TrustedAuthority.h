// The certificate authority that this test process trusts.
#pragma once

#include "rehearsal/LocalAuthority.h"

namespace velto::test {

/// The first call makes it known through SSL_CERT_FILE; it must come before the process's first connection
/// and while there is one thread.
LocalAuthority& trustedAuthority();

} // namespace velto::test

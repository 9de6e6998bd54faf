// Percent-encoding of what stands in a URL.
#pragma once

#include <string>
#include <string_view>

namespace velto {

/// A query value: everything but the unreserved characters is escaped (RFC 3986, sections 2.1 and 3.4).
std::string percentEncoded(std::string_view text);

} // namespace velto

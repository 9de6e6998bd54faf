// Something that a client did and its protocol does not allow.
#pragma once

#include <boost/system/result.hpp>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace velto::rehearsal {

/// The close code is one of RFC 6455, section 7.4.1.
struct Violation {
    static constexpr std::uint16_t invalidPayload = 1007;
    static constexpr std::uint16_t policy = 1008;

    std::uint16_t closeCode = invalidPayload;
    std::string what;
};
[[noreturn]] inline void throw_exception_from_error(const Violation& violation,
                                                    const boost::source_location&) {
    throw std::invalid_argument(violation.what);
}

template <class Value>
using Checked = boost::system::result<Value, Violation>;

} // namespace velto::rehearsal

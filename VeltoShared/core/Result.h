// What an operation that can fail answers: a value, or a failure with a code and a description.
#pragma once

#include <boost/system/result.hpp>

#include <stdexcept>
#include <string>

namespace velto {

/// Codes that other parts of the system compare, from the URL-loading error numbers.
inline constexpr int kErrorBadURL = -1000;
inline constexpr int kErrorNotConnected = -1009;
/// Every other transport failure; its description says what happened.
inline constexpr int kErrorTransport = -1;

struct Failure {
    int code = kErrorTransport;
    std::string description;
};

[[noreturn]] inline void throw_exception_from_error(const Failure& failure, const boost::source_location&) {
    throw std::runtime_error(failure.description);
}

template <class T = void>
using Result = boost::system::result<T, Failure>;

} // namespace velto

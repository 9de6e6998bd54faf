// The one place where the bodies of Boost.Asio and Boost.Beast are compiled.
#include <boost/asio/impl/src.hpp>
#include <boost/asio/ssl/impl/src.hpp>
#include <boost/beast/src.hpp>

// getaddrinfo on a detached thread that reports through an eventfd.
#include "VeltoShared/voice/HostLookup.h"

#include <boost/algorithm/string/predicate.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>

#include <csignal>
#include <cstring>
#include <locale>
#include <mutex>
#include <system_error>
#include <thread>

#include <netdb.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace velto {
namespace {

using asio::ip::tcp;

/// What the resolving thread and the waiting side share.
struct Inquiry {
    HostAddress address;
    int wake = -1;
    std::mutex mutex;
    HostLookup::Answer answer;

    ~Inquiry() {
        if (wake >= 0)
            ::close(wake);
    }
};

HostLookup::Answer askSystem(const HostAddress& address) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    const int error =
        ::getaddrinfo(address.host.c_str(), std::to_string(address.port).c_str(), &hints, &found);
    HostLookup::Answer answer;
    if (error != 0) {
        answer.failure = ::gai_strerror(error);
        answer.mayPass = error == EAI_AGAIN || error == EAI_SYSTEM;
        return answer;
    }
    for (const addrinfo* each = found; each; each = each->ai_next) {
        tcp::endpoint endpoint;
        if (each->ai_addrlen > endpoint.capacity())
            continue;
        std::memcpy(endpoint.data(), each->ai_addr, each->ai_addrlen);
        endpoint.resize(each->ai_addrlen);
        answer.endpoints.push_back(endpoint);
    }
    ::freeaddrinfo(found);
    if (answer.endpoints.empty())
        answer.failure = "no usable address";
    return answer;
}

/// Answers whether the thread could be started.
bool start(const std::shared_ptr<Inquiry>& inquiry) {
    // Signals are for the program's own threads.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    bool started = true;
    try {
        std::thread([inquiry] {
            auto answer = askSystem(inquiry->address);
            const std::lock_guard lock(inquiry->mutex);
            inquiry->answer = std::move(answer);
            const std::uint64_t one = 1;
            [[maybe_unused]] const auto written = ::write(inquiry->wake, &one, sizeof one);
        }).detach();
    } catch (const std::system_error&) {
        started = false;
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return started;
}

} // namespace

struct HostLookup::Impl {
    asio::posix::stream_descriptor waiting;
};

HostLookup::HostLookup(const asio::any_io_executor& executor)
    : impl_(std::make_unique<Impl>(Impl{asio::posix::stream_descriptor(executor)})) {}

HostLookup::~HostLookup() = default;

asio::awaitable<HostLookup::Answer> HostLookup::resolve(HostAddress address) {
    Answer answer;
    if (address.isLiteral) {
        boost::system::error_code impossible;
        answer.endpoints.emplace_back(asio::ip::make_address(address.host, impossible), address.port);
        co_return answer;
    }
    if (boost::algorithm::iequals(address.host, "localhost", std::locale::classic())) {
        // Always this computer (RFC 6761), also where neither a hosts file nor a name server says so.
        answer.endpoints.emplace_back(asio::ip::address_v4::loopback(), address.port);
        answer.endpoints.emplace_back(asio::ip::address_v6::loopback(), address.port);
        co_return answer;
    }
    const auto inquiry = std::make_shared<Inquiry>();
    inquiry->address = std::move(address);
    inquiry->wake = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    const int ours = inquiry->wake < 0 ? -1 : ::dup(inquiry->wake);
    if (ours < 0) {
        answer.failure = "no file descriptors are left";
        co_return answer;
    }
    boost::system::error_code error;
    impl_->waiting.close(error);
    impl_->waiting.assign(ours, error);
    if (error || !start(inquiry)) {
        answer.failure = "no thread for the name resolution could be started";
        co_return answer;
    }
    co_await impl_->waiting.async_wait(asio::posix::descriptor_base::wait_read,
                                       asio::redirect_error(asio::use_awaitable, error));
    boost::system::error_code ignored;
    impl_->waiting.close(ignored);
    if (error) {
        answer.failure = "cancelled";
        co_return answer;
    }
    const std::lock_guard lock(inquiry->mutex);
    co_return std::move(inquiry->answer);
}

void HostLookup::cancel() {
    boost::system::error_code ignored;
    impl_->waiting.cancel(ignored);
}

} // namespace velto

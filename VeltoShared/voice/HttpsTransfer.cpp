// libcurl's multi-socket interface on Asio: curl says what to wait for, Asio waits.
#include "VeltoShared/voice/HttpsTransfer.h"

#include "VeltoShared/voice/FieldValue.h"
#include "VeltoShared/voice/HostLookup.h"
#include "VeltoShared/voice/TlsTrust.h"

#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/this_coro.hpp>
#include <boost/asio/use_awaitable.hpp>

#include <map>
#include <memory>

#include <curl/curl.h>

namespace velto {
namespace {

using boost::system::error_code;
using Descriptor = asio::posix::stream_descriptor;

/// Shared out among the host's addresses, so that one that is dead leaves time for the next.
constexpr long kConnectingSeconds = 20;

bool curlIsReady() {
    static const bool isReady = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return isReady;
}

/// "host:port:address,address", so that curl asks nobody.
std::string resolved(const HostAddress& address, const std::vector<asio::ip::tcp::endpoint>& endpoints) {
    std::string text = address.host + ":" + std::to_string(address.port);
    char separator = ':';
    for (const auto& endpoint : endpoints) {
        const auto ip = endpoint.address();
        if (ip.is_v6() && ip.to_v6().scope_id() != 0)
            continue; // curl would refuse them all
        text += separator;
        text += ip.is_v6() ? "[" + ip.to_string() + "]" : ip.to_string();
        separator = ',';
    }
    return text;
}

} // namespace

/// Held by the awaiting coroutine alone; what waits for its sockets and its timer holds it weakly.
class HttpsTransfer::Connection : public std::enable_shared_from_this<Connection> {
  public:
    Connection(const asio::any_io_executor& executor, Request request, HostAddress address)
        : executor_(executor), timer_(executor), over_(executor, asio::steady_timer::time_point::max()),
          request_(std::move(request)), address_(std::move(address)),
          url_("https://" + address_.header() + request_.target) {}
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    asio::awaitable<std::optional<int>> run(const std::vector<asio::ip::tcp::endpoint>& endpoints);

  private:
    /// A socket of curl's, which alone closes it.
    struct Socket {
        Socket(const asio::any_io_executor& executor, curl_socket_t number) : descriptor(executor) {
            error_code error;
            descriptor.assign(number, error);
        }
        ~Socket() { letGo(); }
        Socket(const Socket&) = delete;
        Socket& operator=(const Socket&) = delete;

        void letGo() {
            if (descriptor.is_open())
                descriptor.release();
        }

        Descriptor descriptor;
        int wanted = 0;  ///< CURL_POLL_IN and CURL_POLL_OUT
        int awaited = 0; ///< the same, of waits that are under way
    };

    template <class Value>
    void set(CURLoption option, Value value) {
        isSetUp_ = curl_easy_setopt(easy_, option, value) == CURLE_OK && isSetUp_;
    }
    void addTo(curl_slist*& list, const std::string& line);
    bool setUp(const std::vector<asio::ip::tcp::endpoint>& endpoints);
    void act(curl_socket_t number, int events);
    void wait(const std::shared_ptr<Socket>& socket, int event);
    int socketWanted(curl_socket_t number, int wanted);
    void timerWanted(long milliseconds);

    static int onSocket(CURL*, curl_socket_t number, int wanted, void* self, void*) {
        return static_cast<Connection*>(self)->socketWanted(number, wanted);
    }
    static int onTimer(CURLM*, long milliseconds, void* self) {
        static_cast<Connection*>(self)->timerWanted(milliseconds);
        return 0;
    }
    static CURLcode onTls(CURL*, void* context, void* self) {
        const bool trusts =
            TlsTrust::share(static_cast<SSL_CTX*>(context), static_cast<Connection*>(self)->address_);
        return trusts ? CURLE_OK : CURLE_SSL_CERTPROBLEM;
    }
    /// To curl the end of the connection ends a head too.
    static std::size_t onHead(char* line, std::size_t size, std::size_t count, void* self) {
        const std::string_view text(line, size * count);
        auto& hasHead = static_cast<Connection*>(self)->hasHead_;
        hasHead = (hasHead && !text.starts_with("HTTP/")) || text == "\r\n" || text == "\n";
        return text.size();
    }
    static std::size_t onBody(char*, std::size_t size, std::size_t count, void*) { return size * count; }

    asio::any_io_executor executor_;
    asio::steady_timer timer_;
    asio::steady_timer over_;
    const Request request_;
    const HostAddress address_;
    const std::string url_;
    CURL* easy_ = nullptr;
    CURLM* multi_ = nullptr;
    curl_slist* fields_ = nullptr;
    curl_slist* resolved_ = nullptr;
    bool isSetUp_ = true;
    bool hasHead_ = false; ///< all of the last response's
    std::optional<int> status_;
    std::map<curl_socket_t, std::shared_ptr<Socket>> sockets_;
};

HttpsTransfer::Connection::~Connection() {
    // Asio lets go of the sockets before curl closes them.
    sockets_.clear();
    curl_multi_setopt(multi_, CURLMOPT_SOCKETFUNCTION, nullptr);
    curl_multi_setopt(multi_, CURLMOPT_TIMERFUNCTION, nullptr);
    curl_multi_remove_handle(multi_, easy_);
    curl_easy_cleanup(easy_);
    curl_multi_cleanup(multi_);
    curl_slist_free_all(fields_);
    curl_slist_free_all(resolved_);
}

void HttpsTransfer::Connection::addTo(curl_slist*& list, const std::string& line) {
    curl_slist* longer = curl_slist_append(list, line.c_str());
    isSetUp_ = longer && isSetUp_;
    if (longer)
        list = longer;
}

/// By itself curl follows no redirects, and of files it only reads the authorities' and opens SSLKEYLOGFILE.
bool HttpsTransfer::Connection::setUp(const std::vector<asio::ip::tcp::endpoint>& endpoints) {
    easy_ = curlIsReady() ? curl_easy_init() : nullptr;
    multi_ = easy_ ? curl_multi_init() : nullptr;
    if (!multi_)
        return false;
    set(CURLOPT_URL, url_.c_str());
    set(CURLOPT_PROTOCOLS_STR, "https");
    set(CURLOPT_PROXY, "");
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_FORBID_REUSE, 1L);
    set(CURLOPT_CONNECTTIMEOUT, kConnectingSeconds);
    set(CURLOPT_HEADERFUNCTION, &onHead);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_WRITEFUNCTION, &onBody);
    set(CURLOPT_USERAGENT, "Velto");
    for (const auto& [name, value] : request_.headers)
        addTo(fields_, std::string(name).append(": ").append(value));
    set(CURLOPT_HTTPHEADER, fields_);
    if (request_.body) {
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body->size()));
        set(CURLOPT_POSTFIELDS, request_.body->data());
    }
    if (!address_.isLiteral) {
        addTo(resolved_, resolved(address_, endpoints));
        set(CURLOPT_RESOLVE, resolved_);
    }
    // The authorities come from `onTls`: curl reads none, and keeps to the rule that only roots are ones.
    set(CURLOPT_CAINFO, static_cast<const char*>(nullptr));
    set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
    set(CURLOPT_CA_CACHE_TIMEOUT, 0L);
    set(CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_NO_PARTIALCHAIN));
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(CURLOPT_SSL_CTX_FUNCTION, &onTls);
    set(CURLOPT_SSL_CTX_DATA, this);
    curl_multi_setopt(multi_, CURLMOPT_SOCKETFUNCTION, &onSocket);
    curl_multi_setopt(multi_, CURLMOPT_SOCKETDATA, this);
    curl_multi_setopt(multi_, CURLMOPT_TIMERFUNCTION, &onTimer);
    curl_multi_setopt(multi_, CURLMOPT_TIMERDATA, this);
    return isSetUp_ && curl_multi_add_handle(multi_, easy_) == CURLM_OK;
}

/// Tells curl what has happened, and looks whether that was the end.
void HttpsTransfer::Connection::act(curl_socket_t number, int events) {
    int running = 0;
    const bool failed = curl_multi_socket_action(multi_, number, events, &running) != CURLM_OK;
    int left = 0;
    if (const CURLMsg* message = curl_multi_info_read(multi_, &left);
        message && message->msg == CURLMSG_DONE && message->data.result == CURLE_OK && hasHead_) {
        long code = 0;
        curl_easy_getinfo(easy_, CURLINFO_RESPONSE_CODE, &code);
        status_ = static_cast<int>(code);
    }
    if (failed || running == 0)
        over_.expires_at(asio::steady_timer::time_point::min());
}

int HttpsTransfer::Connection::socketWanted(curl_socket_t number, int wanted) {
    if (wanted == CURL_POLL_REMOVE) {
        if (const auto gone = sockets_.extract(number))
            gone.mapped()->letGo(); // at once: curl closes it next, also while its handler runs
        return 0;
    }
    auto& socket = sockets_[number];
    if (!socket)
        socket = std::make_shared<Socket>(executor_, number);
    if (!socket->descriptor.is_open())
        return -1;
    socket->wanted = wanted;
    wait(socket, CURL_POLL_IN);
    wait(socket, CURL_POLL_OUT);
    return 0;
}

void HttpsTransfer::Connection::wait(const std::shared_ptr<Socket>& socket, int event) {
    if (!(socket->wanted & event) || (socket->awaited & event))
        return;
    socket->awaited |= event;
    const auto kind = event == CURL_POLL_IN ? Descriptor::wait_read : Descriptor::wait_write;
    // The connection holds the socket, so where the socket is, it is too.
    socket->descriptor.async_wait(kind, [this, weak = std::weak_ptr(socket), event](const error_code& error) {
        const auto ready = weak.lock();
        if (!ready || error == asio::error::operation_aborted)
            return;
        ready->awaited &= ~event;
        if (ready->wanted & event)
            act(ready->descriptor.native_handle(),
                error ? CURL_CSELECT_ERR : (event == CURL_POLL_IN ? CURL_CSELECT_IN : CURL_CSELECT_OUT));
        if (ready->descriptor.is_open())
            wait(ready, event);
    });
}

void HttpsTransfer::Connection::timerWanted(long milliseconds) {
    timer_.cancel();
    if (milliseconds < 0)
        return;
    timer_.expires_after(std::chrono::milliseconds(milliseconds));
    timer_.async_wait([weak = weak_from_this()](const error_code& error) {
        const auto self = weak.lock();
        if (self && !error)
            self->act(CURL_SOCKET_TIMEOUT, 0);
    });
}

asio::awaitable<std::optional<int>>
HttpsTransfer::Connection::run(const std::vector<asio::ip::tcp::endpoint>& endpoints) {
    if (!setUp(endpoints))
        co_return std::nullopt;
    error_code ignored;
    co_await over_.async_wait(asio::redirect_error(asio::use_awaitable, ignored));
    co_return status_;
}

asio::awaitable<std::optional<int>> HttpsTransfer::status(Request request) {
    const auto address = HostAddress::parse(request.host);
    if (!address)
        co_return std::nullopt;
    for (const auto& [name, value] : request.headers)
        if (!isFieldValue(value))
            co_return std::nullopt;
    const auto executor = co_await asio::this_coro::executor;
    HostLookup lookup(executor);
    const auto found = co_await lookup.resolve(*address);
    if (found.endpoints.empty())
        co_return std::nullopt;
    const auto connection = std::make_shared<Connection>(executor, std::move(request), *address);
    co_return co_await connection->run(found.endpoints);
}

} // namespace velto

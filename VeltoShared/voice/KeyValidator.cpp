#include "VeltoShared/voice/KeyValidator.h"

#include "VeltoShared/core/Clock.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/core/TextTrim.h"
#include "VeltoShared/voice/HttpsTransfer.h"
#include "VeltoShared/voice/PercentEncoding.h"
#include "VeltoShared/voice/ProviderHosts.h"

#include <boost/asio/experimental/awaitable_operators.hpp>

namespace velto::KeyValidator {
namespace {

constexpr auto kLimit = std::chrono::seconds(20);

asio::awaitable<bool> ok(HttpsTransfer::Request request) {
    using namespace asio::experimental::awaitable_operators;
    const auto first = co_await (HttpsTransfer::status(std::move(request)) || Clock::shared().sleep(kLimit));
    if (first.index() != 0)
        co_return false;
    const int status = std::get<0>(first).value_or(0);
    co_return status >= 200 && status <= 299;
}

} // namespace

asio::awaitable<bool> validate(VoiceProvider provider, std::string key) {
    const auto trimmed = trimBlanksAndNewlines(key);
    if (trimmed.empty())
        co_return false;
    switch (provider) {
    case VoiceProvider::gemini:
        co_return co_await validateGemini(trimmed);
    case VoiceProvider::openai:
        co_return co_await validateOpenAI(trimmed);
    }
    co_return false;
}

asio::awaitable<bool> validateGemini(std::string_view key) {
    HttpsTransfer::Request request;
    request.host = ProviderHosts::host(VoiceProvider::gemini);
    request.target = "/v1beta/models?key=" + percentEncoded(key);
    return Background::run(ok(std::move(request)));
}

asio::awaitable<bool> validateOpenAI(std::string_view key) {
    HttpsTransfer::Request request;
    request.host = ProviderHosts::host(VoiceProvider::openai);
    request.target = "/v1/chat/completions";
    request.headers = {{"Content-Type", "application/json"},
                       {"Authorization", std::string("Bearer ").append(key)}};
    request.body = R"({"model":"gpt-4o-mini","messages":[{"role":"user","content":"ping"}],"max_tokens":1})";
    return Background::run(ok(std::move(request)));
}

} // namespace velto::KeyValidator

#include "rehearsal/server/KeyChecks.h"

#include "rehearsal/server/JSONNode.h"

#include <boost/json.hpp>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;

std::string listOfModels() {
    json::object model{{"name", "models/gemini-3.1-flash-live-preview"},
                       {"version", "001"},
                       {"displayName", "Gemini 3.1 Flash Live Preview"},
                       {"inputTokenLimit", 131072},
                       {"outputTokenLimit", 65536},
                       {"supportedGenerationMethods", json::array{"bidiGenerateContent"}}};
    return json::serialize(json::object{{"models", json::array{std::move(model)}}});
}

std::string completion() {
    json::object message{{"role", "assistant"}, {"content", "P"}, {"refusal", nullptr}};
    json::object choice{
        {"index", 0}, {"message", std::move(message)}, {"logprobs", nullptr}, {"finish_reason", "length"}};
    return json::serialize(
        json::object{{"id", "chatcmpl-Rehearsal"},
                     {"object", "chat.completion"},
                     {"created", 1735689600},
                     {"model", "gpt-4o-mini-2024-07-18"},
                     {"choices", json::array{std::move(choice)}},
                     {"usage", {{"prompt_tokens", 8}, {"completion_tokens", 1}, {"total_tokens", 9}}}});
}

std::string geminiError(unsigned status, const std::string& message) {
    json::object error{{"code", status},
                       {"message", message},
                       {"status", status == 401 ? "UNAUTHENTICATED" : "INVALID_ARGUMENT"}};
    return json::serialize(json::object{{"error", std::move(error)}});
}

std::string openAIError(unsigned status, const std::string& message) {
    json::object error{{"message", message},
                       {"type", "invalid_request_error"},
                       {"param", nullptr},
                       {"code", status == 401 ? json::value("invalid_api_key") : json::value()}};
    return json::serialize(json::object{{"error", std::move(error)}});
}

/// What is wrong with the form; empty when nothing is.
std::string complaintOfGemini(const HttpRequest& request) {
    if (request.method != "GET")
        return "the method is not GET";
    if (!request.onlyQueryItem("key"))
        return "the query is not the one item 'key'";
    if (!request.body.empty() || request.has("Transfer-Encoding") || request.has("Content-Type"))
        return "there is a body";
    if (request.has("Authorization") || request.has("x-goog-api-key"))
        return "there is a credential among the fields";
    return {};
}

std::string parsePing(const JSONNode& body) {
    const auto members = body.members({"model", "messages", "max_tokens"});
    members[0].isText("gpt-4o-mini");
    const auto message = members[1].only().members({"role", "content"});
    message[0].isText("user");
    message[1].isText("ping");
    members[2].is(1);
    return message[1].text();
}

std::string complaintOfOpenAI(const HttpRequest& request) {
    if (request.method != "POST")
        return "the method is not POST";
    if (request.hasQuery())
        return "there is a query";
    if (request.field("Content-Type") != "application/json")
        return "no field Content-Type with 'application/json'";
    if (const auto credential = request.field("Authorization");
        !credential || !credential->starts_with("Bearer "))
        return "no field Authorization with 'Bearer '";
    const auto ping = parseChecked(request.body, parsePing);
    return ping ? std::string() : "the body: " + ping.error().what;
}

} // namespace

std::optional<KeyCheckAnswer> answerKeyCheck(const HttpRequest& request, const ApiKeys& keys) {
    const bool isGemini = request.path() == "/v1beta/models";
    if (!isGemini && request.path() != "/v1/chat/completions")
        return {};
    KeyCheckAnswer answer;
    answer.provider = isGemini ? VoiceProvider::gemini : VoiceProvider::openai;
    answer.complaint = isGemini ? complaintOfGemini(request) : complaintOfOpenAI(request);
    if (request.version != 11)
        answer.complaint = "not HTTP/1.1";
    const auto error = isGemini ? geminiError : openAIError;
    const auto& key = keys.at(answer.provider);
    const bool isRight =
        isGemini ? request.onlyQueryItem("key") == key : request.field("Authorization") == "Bearer " + key;
    if (!answer.complaint.empty()) {
        answer.status = 400;
        answer.body = error(400, answer.complaint);
    } else if (!isRight) {
        answer.status = 401;
        answer.body = error(401, "Incorrect API key provided.");
    } else {
        answer.body = isGemini ? listOfModels() : completion();
    }
    return answer;
}

} // namespace velto::rehearsal

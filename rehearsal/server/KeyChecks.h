// The requests by which an application asks the providers whether a key is good.
#pragma once

#include "rehearsal/server/ApiKeys.h"
#include "rehearsal/server/HttpRequest.h"

#include <optional>
#include <string>

namespace velto::rehearsal {

struct KeyCheckAnswer {
    VoiceProvider provider{};
    unsigned status = 200; ///< 401 for another key, 400 for another request than the one form
    std::string body;      ///< JSON, as the provider's
    std::string complaint; ///< what is wrong with the form; empty when nothing is
};

/// Gemini: the list of models is asked for ("GET /v1beta/models?key=…"). OpenAI: a chat completion of one
/// token
/// ("POST /v1/chat/completions"). None when the request's path is neither.
std::optional<KeyCheckAnswer> answerKeyCheck(const HttpRequest& request, const ApiKeys& keys);

} // namespace velto::rehearsal

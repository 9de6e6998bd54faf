// Whether a provider accepts an API key: one small request of its REST API.
#pragma once

#include "VeltoShared/voice/VoiceProvider.h"

#include <boost/asio/awaitable.hpp>

#include <string>
#include <string_view>

namespace velto {

namespace asio = boost::asio;

/// False is the answer to whatever is no acceptance within 20 s: another status than 200 to 299, no network,
/// an untrusted certificate, a wait cancelled on `Background`. The requests go to the host that calls go to,
/// by the same rules, one connection each. Nothing is logged or kept. Any number at once; any executor may
/// await them, the work is done on `Background`.
namespace KeyValidator {

/// The key without white space and line ends around it; of an empty one nobody is asked.
asio::awaitable<bool> validate(VoiceProvider provider, std::string key);
/// Lists the models (Generative Language API, models.list). The key is in the query only.
asio::awaitable<bool> validateGemini(std::string_view key);
/// A chat completion of one token (OpenAI API, POST /v1/chat/completions). The key is in Authorization only;
/// one with a control character inside cannot be sent, and is not.
asio::awaitable<bool> validateOpenAI(std::string_view key);

} // namespace KeyValidator

} // namespace velto

// Accounts of the secret store under which the application files its keys.
#pragma once

#include <string_view>

namespace velto::SecretKey {

inline constexpr std::string_view geminiAPIKey = "gemini_api_key";
inline constexpr std::string_view openAIAPIKey = "openai_api_key";

} // namespace velto::SecretKey

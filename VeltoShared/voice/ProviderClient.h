// The session of a provider: the shared client over the provider's messages.
#pragma once

#include "VeltoShared/voice/ProviderHosts.h"
#include "VeltoShared/voice/VoiceClient.h"

#include <memory>
#include <string>
#include <utility>

namespace velto {

/// `Messages` is a ProviderMessages made of SessionOptions, with its `provider` as a constant.
template <class Messages>
class ProviderClient final : public VoiceClient {
  public:
    /// The host is read from the preferences here.
    ProviderClient(std::string apiKey, std::string model, std::string voice, std::string systemInstruction)
        : ProviderClient({std::move(apiKey), std::move(model), std::move(voice), std::move(systemInstruction),
                          ProviderHosts::host(Messages::provider)}) {}
    explicit ProviderClient(const SessionOptions& options, VoiceSocket::Limits limits = {})
        : VoiceClient(std::make_unique<Messages>(options), options.apiKey, limits) {}
};

} // namespace velto

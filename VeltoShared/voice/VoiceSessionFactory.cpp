// Which client belongs to which provider.
#include "VeltoShared/voice/VoiceSessionFactory.h"

#include "VeltoShared/voice/GeminiLiveClient.h"

namespace velto {
namespace {

/// Keeps the contract of a session that never connects.
class UnavailableSession final : public VoiceSession {
  public:
    explicit UnavailableSession(VoiceProvider provider)
        : description_(std::string(displayName(provider)) + " is not available in this build") {}

    VoiceEvents& events() override { return events_; }
    asio::awaitable<Result<>> connect() override { co_return Failure{kErrorTransport, description_}; }
    asio::awaitable<void> sendAudio(std::span<const std::byte>) override { co_return; }
    asio::awaitable<void> sendClientText(std::string) override { co_return; }
    asio::awaitable<void> sendToolResponse(std::string, std::string, std::string) override { co_return; }
    asio::awaitable<void> close() override {
        events_.push(event::Closed{"client closed"});
        events_.finish();
        co_return;
    }

  private:
    std::string description_;
    VoiceEvents events_{kVoiceEventCapacity};
};

} // namespace

std::shared_ptr<VoiceSession> makeVoiceSession(VoiceProvider provider, const std::string& apiKey,
                                               std::string model, std::string voice,
                                               std::string systemInstruction) {
    if (provider == VoiceProvider::gemini)
        return std::make_shared<GeminiLiveClient>(apiKey, std::move(model), std::move(voice),
                                                  std::move(systemInstruction));
    return std::make_shared<UnavailableSession>(provider);
}

} // namespace velto

// A provider's service, as far as a benchmark needs it.
#pragma once

#include "VeltoShared/voice/VoiceProvider.h"
#include "tests/support/ScriptedTlsServer.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velto::bench {

/// A second of the model's speech is 48 000 bytes.
inline constexpr std::size_t kPcmBytes = 45'000;

std::vector<std::byte> someBytes(std::size_t count);
std::string base64Of(std::size_t count);

/// Messages as the service sends them: Gemini in binary frames, OpenAI in text frames.
class Service {
  public:
    explicit Service(VoiceProvider provider);

    VoiceProvider provider() const { return provider_; }
    /// What stands before the base64 text in an audio message.
    std::string_view audioKey() const;

    /// Serves one connection. The first message is the configuration, which is accepted; then, whenever a
    /// message holds `"go"`, `count` audio messages as fast as they are taken, and a turn's end.
    void serveAudio(test::ServerPeer& peer, int count) const;
    /// The same with the other messages of a call between the audio.
    void serveTalk(test::ServerPeer& peer, std::vector<int> counts) const;

  private:
    std::string frame(std::string_view message) const;
    void serve(test::ServerPeer& peer, const std::vector<std::string>& frames,
               const std::vector<int>& counts) const;

    VoiceProvider provider_;
    std::string setup_;
    std::string audio_;
    std::vector<std::string> talk_;
    std::string end_;
};

} // namespace velto::bench

// A session, an agent and a readiness that a control server drives in tests, and a client with raw bytes.
#pragma once

#include "VeltoApp/control/ControlTargets.h"
#include "VeltoShared/control/ControlAddress.h"

#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <string_view>
#include <vector>

namespace velto::test {

class FakeSession : public ControlledSession {
  public:
    bool running() const override { return isRunning; }
    std::string_view state() const override { return stateText; }
    std::string number() const override { return dialled; }
    void setNumber(std::string number) override { dialled = std::move(number); }
    std::int64_t sessionNumber() const override { return session; }
    void start(std::string goal, bool dial) override {
        starts.push_back((dial ? "dial " : "watch ") + dialled + ": " + goal);
        isRunning = startWorks;
        stateText = startWorks ? stateText : "error";
        session += startWorks ? 1 : 0;
    }
    void stop() override { ++stops; }
    std::vector<std::string> liveTranscript() const override {
        ++looks;
        return transcriptAt ? transcriptAt(looks) : lines;
    }

    bool isRunning = false;
    bool startWorks = true;
    std::string stateText = "idle";
    std::string dialled;
    std::int64_t session = 0;
    std::vector<std::string> lines;
    std::function<std::vector<std::string>(int look)> transcriptAt;
    std::vector<std::string> starts;
    int stops = 0;
    mutable int looks = 0;
};

class FakeAgent : public ControlledAgent {
  public:
    std::optional<VoiceProvider> activeProvider() const override { return provider; }
    std::string goal() const override { return "the agent's goal"; }
    bool anyKeyValid() const override { return gemini; }
    bool geminiValid() const override { return gemini; }
    bool openaiValid() const override { return false; }
    bool hasGeminiKey() const override { return gemini; }
    bool hasOpenAIKey() const override { return true; }

    std::optional<VoiceProvider> provider = VoiceProvider::openai;
    bool gemini = true;
};

class FakeReadiness : public ControlledReadiness {
  public:
    void refresh() override { seen = driver; }
    bool axReady() const override { return true; }
    bool micReady() const override { return true; }
    bool driverReady() const override { return seen; }
    bool ready() const override { return seen; }

    bool driver = true;
    bool seen = false; ///< when last looked
};

/// A connection that gives up after 30 s, so that a broken server fails a test instead of hanging it.
class RawClient {
  public:
    explicit RawClient(const std::filesystem::path& path)
        : fd_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        const ControlAddress address(path);
        connected_ = ::connect(fd_, address.get(), ControlAddress::kLength) == 0;
        const timeval limit{.tv_sec = 30, .tv_usec = 0};
        ::setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        ::setsockopt(fd_, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    }
    ~RawClient() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    RawClient(RawClient&& other) noexcept : fd_(std::exchange(other.fd_, -1)), connected_(other.connected_) {}
    RawClient& operator=(RawClient&&) = delete;

    bool connected() const { return connected_; }
    bool send(std::string_view bytes) const {
        while (!bytes.empty()) {
            const auto sent = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent <= 0)
                return false;
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        }
        return true;
    }
    void endSending() const { ::shutdown(fd_, SHUT_WR); }
    /// All that comes until the server closes.
    std::string receiveAll() const {
        std::string all;
        std::array<char, 65'536> chunk{};
        for (;;) {
            const auto count = ::recv(fd_, chunk.data(), chunk.size(), 0);
            if (count <= 0)
                return count == 0 || errno == ECONNRESET ? all : all + "<time-out>";
            all.append(chunk.data(), static_cast<std::size_t>(count));
        }
    }
    std::string ask(std::string_view bytes) const {
        send(bytes);
        return receiveAll();
    }

  private:
    int fd_;
    bool connected_ = false;
};

} // namespace velto::test

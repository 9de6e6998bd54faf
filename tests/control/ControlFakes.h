// A session, an agent and a readiness that a control server drives in tests, and a client with raw bytes.
#pragma once

#include "VeltoApp/control/ControlTargets.h"
#include "VeltoShared/control/ControlAddress.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/write.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace velto::test {

namespace asio = boost::asio;

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
        if (started)
            started();
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
    std::function<void()> started;
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
    void refresh() override { ++looks; }
    bool axReady() const override { return true; }
    bool micReady() const override { return true; }
    bool driverReady() const override { return looks > 0; }
    bool ready() const override { return looks > 0; }

    int looks = 0;
};

class RawClient {
  public:
    explicit RawClient(const std::filesystem::path& path) {
        socket_.connect(std::string(ControlAddress(path).path()), error_);
    }
    bool connected() const { return !error_; }
    bool send(std::string_view bytes) {
        asio::write(socket_, asio::buffer(bytes), error_);
        return !error_;
    }
    void endSending() { socket_.shutdown(asio::socket_base::shutdown_send, error_); }
    /// All that comes until the server closes.
    std::string receiveAll() {
        std::string all;
        asio::read(socket_, asio::dynamic_buffer(all), error_);
        return all;
    }
    std::string ask(std::string_view bytes) {
        send(bytes);
        return receiveAll();
    }

  private:
    /// One for all: each would take descriptors of its own.
    static asio::io_context& context() {
        static asio::io_context context;
        return context;
    }
    asio::local::stream_protocol::socket socket_{context()};
    boost::system::error_code error_;
};

} // namespace velto::test

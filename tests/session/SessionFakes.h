// A line, agent and archive that a test plays by hand, and the simulated computer's sound; what the session
// asks of them is noted in order.
#pragma once

#include "VeltoApp/history/CallRecord.h"
#include "VeltoApp/session/LiveCollaborators.h"
#include "VeltoShared/core/Clock.h"

#include <string>
#include <vector>

namespace velto::test {

using Notes = std::vector<std::string>;

struct FakeLine : CallLine {
    explicit FakeLine(Notes& n) : notes(n) {}
    bool trusted() override { return isTrusted; }
    std::vector<std::string> texts(const std::optional<std::string>& bundleID) override {
        if (bundleID)
            return {"Phone", "Calling…"};
        return {"Mobile", "Phone"};
    }
    bool callActive() override { return active; }
    bool callAnswered() override { return active && answered; }
    asio::awaitable<bool> dial(std::string number, std::function<void(std::string)> log) override {
        notes.push_back("dial " + number);
        log("dial: opening tel-phoneapp:" + number);
        co_await Clock::shared().sleep(std::chrono::seconds(1));
        if (dialSucceeds)
            active = true;
        co_return dialSucceeds;
    }
    asio::awaitable<bool> hangup() override {
        notes.push_back("hangup");
        active = active && !hangupSucceeds;
        co_return hangupSucceeds;
    }

    Notes& notes;
    bool isTrusted = true;
    bool active = false;
    bool answered = false;
    bool dialSucceeds = true;
    bool hangupSucceeds = true;
};

/// The real thing over the platform's devices.
struct FakeAudio : CallAudio {
    explicit FakeAudio(Notes& n) : notes(n) {}
    bool tapsSupported() override { return live.tapsSupported(); }
    std::unique_ptr<CallTap> makeTap(const std::string& bundleID, const std::string& name,
                                     bool mute) override {
        return live.makeTap(bundleID, name, mute);
    }
    std::unique_ptr<CallRecorder> makeRecorder(const std::string& device, double rate,
                                               const std::filesystem::path& file) override {
        return live.makeRecorder(device, rate, file);
    }
    AudioBridge::Status enforceSavingPrevious(bool inputOnly) override {
        return live.enforceSavingPrevious(inputOnly);
    }
    AudioBridge::Status enforce(bool inputOnly) override { return live.enforce(inputOnly); }
    bool restoreIfNeeded() override {
        notes.push_back("restore");
        return live.restoreIfNeeded();
    }
    void observeReturn(std::function<void()> returned) override { live.observeReturn(std::move(returned)); }

    Notes& notes;
    CallAudio& live = *liveCollaborators().audio;
};

struct FakeAgents : CallAgents {
    explicit FakeAgents(Notes& n) : notes(n) {}

    struct Agent : CallAgent {
        explicit Agent(FakeAgents& m) : maker(m) {}
        void setLog(std::function<void(std::string)> sink) override { log = std::move(sink); }
        void
        setOnToolCall(std::function<std::string(const std::string&, const std::string&)> handler) override {
            onToolCall = std::move(handler);
        }
        asio::awaitable<Result<>> start() override {
            maker.notes.push_back("agent start");
            co_await Clock::shared().sleep(maker.startTime);
            if (!maker.failure.empty())
                co_return Failure{kErrorTransport, maker.failure};
            co_return Result<>{};
        }
        void greet() override { maker.notes.push_back("greet"); }
        void stop() override {
            maker.notes.push_back("agent stop");
            log("final stats: downlink frames=1");
        }

        FakeAgents& maker;
        std::function<void(std::string)> log;
        std::function<std::string(const std::string&, const std::string&)> onToolCall;
    };
    std::shared_ptr<CallAgent> make(const CallAgentOptions& options) override {
        made.push_back(options);
        return latest = std::make_shared<Agent>(*this);
    }

    Notes& notes;
    std::vector<CallAgentOptions> made;
    std::shared_ptr<Agent> latest;
    std::string failure;
    Clock::Duration startTime = std::chrono::milliseconds(200);
};

struct FakeArchive : CallArchive {
    explicit FakeArchive(Notes& n) : notes(n) {}
    void add(CallRecord record) override {
        notes.push_back("saved");
        records.insert(records.begin(), std::move(record));
    }
    Notes& notes;
    std::vector<CallRecord> records;
};

} // namespace velto::test

// A line, sound, agent and archive that a test plays by hand; every call of the session is noted in order.
#pragma once

#include "VeltoApp/history/CallRecord.h"
#include "VeltoApp/session/SessionCollaborators.h"
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
        co_await Clock::shared().sleep(dialTime);
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
    Clock::Duration dialTime = std::chrono::seconds(1);
};

struct FakeAudio : CallAudio {
    explicit FakeAudio(Notes& n) : notes(n) {}

    struct Tap : CallTap {
        explicit Tap(Notes& n) : notes(n) {}
        std::string deviceName() const override { return "VeltoTap"; }
        void destroy() override { notes.push_back("tap destroyed"); }
        Notes& notes;
    };
    struct Recorder : CallRecorder {
        Recorder(Notes& n, std::string lost) : notes(n), troubled(std::move(lost)) {}
        void start() override { notes.push_back("recorder started"); }
        void stop() override { notes.push_back("recorder stopped"); }
        std::string trouble() const override { return troubled; }
        Notes& notes;
        std::string troubled;
    };

    bool tapsSupported() override { return supportsTaps; }
    std::unique_ptr<CallTap> makeTap(const std::string& bundleID, const std::string& name,
                                     bool mute) override {
        notes.push_back("tap " + bundleID + " " + name + (mute ? " muted" : ""));
        if (!tapSucceeds)
            return nullptr;
        return std::make_unique<Tap>(notes);
    }
    std::unique_ptr<CallRecorder> makeRecorder(const std::string& device, double rate,
                                               const std::filesystem::path& file) override {
        recordedFile = file;
        notes.push_back("record " + device + " " + std::to_string(static_cast<int>(rate)));
        if (!recorderSucceeds)
            return nullptr;
        return std::make_unique<Recorder>(notes, recorderTrouble);
    }
    AudioBridge::Status enforceSavingPrevious(bool inputOnly) override {
        notes.push_back(inputOnly ? "save and enforce input" : "save and enforce");
        switched = true;
        return status(inputOnly);
    }
    AudioBridge::Status enforce(bool inputOnly) override {
        notes.push_back("enforce");
        return status(inputOnly);
    }
    bool restoreIfNeeded() override {
        notes.push_back("restore");
        return std::exchange(switched, false);
    }
    void observeReturn(std::function<void()> observer) override { returned = std::move(observer); }

    AudioBridge::Status status(bool inputOnly) const {
        if (!devicesExist)
            return {false, "Bridge devices not installed — install in Settings → Debug → Drivers", "Mic",
                    "Speaker"};
        return {true, inputOnly ? "Uplink routing (input only)" : "Bridge routing OK",
                std::string(AudioBridge::inputDevice),
                inputOnly ? "Speaker" : std::string(AudioBridge::outputDevice)};
    }

    Notes& notes;
    bool supportsTaps = true;
    bool tapSucceeds = true;
    bool recorderSucceeds = true;
    std::string recorderTrouble;
    bool devicesExist = true;
    bool switched = false;
    std::filesystem::path recordedFile;
    std::function<void()> returned;
};

struct FakeAgent : CallAgent {
    explicit FakeAgent(Notes& n) : notes(n) {}
    void setLog(std::function<void(std::string)> sink) override { log = std::move(sink); }
    void setOnToolCall(std::function<std::string(const std::string&, const std::string&)> handler) override {
        onToolCall = std::move(handler);
    }
    asio::awaitable<Result<>> start() override {
        notes.push_back("agent start");
        co_await Clock::shared().sleep(startTime);
        if (!failure.empty())
            co_return Failure{kErrorTransport, failure};
        co_return Result<>{};
    }
    void greet() override { notes.push_back("greet"); }
    void stop() override {
        notes.push_back("agent stop");
        log("final stats: downlink frames=1");
    }

    Notes& notes;
    Clock::Duration startTime = std::chrono::milliseconds(200);
    std::string failure;
    std::function<void(std::string)> log;
    std::function<std::string(const std::string&, const std::string&)> onToolCall;
};

struct FakeAgents : CallAgents {
    explicit FakeAgents(Notes& n) : notes(n) {}
    std::shared_ptr<CallAgent> make(const CallAgentOptions& options) override {
        made.push_back(options);
        latest = std::make_shared<FakeAgent>(notes);
        latest->failure = failure;
        latest->startTime = startTime;
        return latest;
    }

    Notes& notes;
    std::vector<CallAgentOptions> made;
    std::shared_ptr<FakeAgent> latest;
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

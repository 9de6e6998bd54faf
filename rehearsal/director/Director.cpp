// Puts a scenario on.
#include "rehearsal/director/Director.h"

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/ShellWord.h"
#include "VeltoPlatform/linux/InstallTree.h"
#include "VeltoPlatform/linux/LinuxFolders.h"
#include "VeltoPlatform/linux/LinuxWorkspace.h"
#include "VeltoPlatform/linux/SecretServiceStore.h"
#include "VeltoShared/core/KeychainStore.h"
#include "rehearsal/director/Aftermath.h"
#include "rehearsal/director/Inquiry.h"
#include "rehearsal/director/KeySearch.h"
#include "rehearsal/director/PrivateSession.h"
#include "rehearsal/director/Recording.h"
#include "rehearsal/director/RehearsalKeys.h"
#include "rehearsal/director/Stage.h"
#include "rehearsal/director/Summary.h"
#include "rehearsal/director/Surroundings.h"
#include "rehearsal/director/TranscriptPrinter.h"
#include "rehearsal/director/Troublemaker.h"
#include "rehearsal/director/Verdict.h"
#include "rehearsal/process/TextFile.h"

#include <boost/json.hpp>

#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;
using namespace std::chrono_literals;

constexpr auto kToStart = 15s;
constexpr auto kToAnswerRequest = 15s;
constexpr auto kBetweenLooks = 150ms;
/// After the record: for the last reports of the others.
constexpr auto kToSettle = 3s;
/// How long the application stays after a call that somebody else placed, who may ask it for the outcome.
constexpr auto kToBeSeen = 2s;
/// How long before a kill a sound must have been heard to be sure to be in the file.
constexpr auto kBeforeKill = 1200ms;

std::string textIn(const json::object& object, std::string_view key) {
    const auto* value = object.if_contains(key);
    return value != nullptr && value->is_string() ? std::string(value->get_string()) : std::string();
}

class Rehearsal {
  public:
    Rehearsal(const DirectorOptions& options, const GuardianLink& guardian)
        : options_(options), scenario_(options.scenario), guardian_(guardian),
          surroundings_(guardian.folder()), stage_(guardian),
          printer_(out(), !options.json && ::isatty(STDOUT_FILENO) != 0, options.scenario, evidence_) {
        evidence_.expectedProvider =
            options.keys.contains(options.provider) ? options.provider : *options.keys.begin();
        evidence_.storedKeys = options.keys;
        evidence_.isRecorded = options.record;
        evidence_.tapWanted = options.tap;
    }

    int run() {
        const bool played = prepare() && placeCall() && (options_.kill ? killAndStartAgain() : follow());
        finish(played);
        if (stage_.guardianGone()) {
            std::cerr << "velto-rehearse: " << stage_.failure() << std::endl;
            session_.reset();
            guardian_.cleanUp();
        }
        return exitCode_;
    }

  private:
    std::ostream& out() { return options_.json ? std::cerr : std::cout; }

    bool fail(const std::string& reason) {
        // What the stage noticed is the cause; what was being waited for is not.
        troubles_.push_back(stage_.failure().empty() ? reason : stage_.failure());
        return false;
    }

    bool prepare();
    bool startSession();
    bool startPrograms();
    bool startApplication();
    ChildProgram program(const char* title, const std::filesystem::path& file,
                         std::vector<std::string> arguments) const;
    std::optional<json::object> ask(json::object request);
    /// As somebody would who has it open all day.
    bool openPhone();
    bool placeCall();
    /// Until somebody else has placed the call.
    bool waitForCall();
    bool follow();
    /// Kills the application once something has been said, and starts it again.
    bool killAndStartAgain();
    bool untilTheMoment(std::chrono::steady_clock::time_point& recordedSince);
    bool isOver(const json::object& status);
    void watchUsage();
    void lookForKeysWhenDue();
    void takeRecord();
    void finish(bool played);
    void explain();

    const DirectorOptions& options_;
    const Scenario& scenario_;
    const GuardianLink& guardian_;
    Surroundings surroundings_;
    /// Before this process becomes one of the private session.
    const Environment display_ = options_.windows ? Surroundings::callersDisplay() : Environment();
    RehearsalKeys keys_;
    Evidence evidence_;
    KeySearch keySearch_{keys_, evidence_};
    Measurements measurements_;
    std::vector<std::string> troubles_;
    LinuxFolders folders_{"velto-rehearse"};
    SecretServiceStore keyring_{[this](const std::string& trouble) { troubles_.push_back(trouble); }};
    std::unique_ptr<Inquiry> inquiry_;
    Stage stage_;
    std::unique_ptr<PrivateSession> session_;
    TranscriptPrinter printer_;
    ChildProcess* application_ = nullptr;
    std::optional<ProcessUsage> usageAtDial_;
    std::optional<std::size_t> linesAtLastLook_; ///< when the processes were looked at for keys
    Troublemaker troublemaker_{scenario_, evidence_, stage_, printer_, [this] { ask({{"cmd", "status"}}); }};
    std::optional<Aftermath> aftermath_;
    int exitCode_ = 1;
};

bool Rehearsal::prepare() {
    out() << "Rehearsal \"" << scenario_.name << "\": " << scenario_.about << std::endl;
    Platform parts;
    parts.folders = &folders_;
    parts.secretStore = &keyring_;
    installPlatform(parts);
    if (!surroundings_.prepare())
        return fail("the folder " + guardian_.folder().string() + " could not be filled");
    return startSession() && startPrograms();
}

bool Rehearsal::startSession() {
    if (options_.windows && display_.empty())
        return fail("there is no display to show windows on (DISPLAY is not set)");
    PrivateSessionPlan plan;
    plan.folder = guardian_.folder();
    plan.sound.kind = options_.sound;
    plan.display = display_;
    plan.folders = surroundings_.environment();
    if (options_.cut == Cut::uplink)
        plan.sound.devices.muted.insert("VeltoVoice 2ch Feed");
    if (options_.cut == Cut::loop)
        plan.sound.devices.without.insert("VeltoLoop 2ch");
    plan.phone = InstallTree::programs() / "velto-phone";
    plan.scenario = options_.scenarioFile;
    plan.reports = surroundings_.file("reports");
    const bool expected = stage_.expect(
        plan.reports, [this](const json::object& event) { evidence_.fromCallee(event); },
        [this] {
            if (!evidence_.ended)
                stage_.fail(std::string(kPhoneTitle) + " has ended");
        });
    if (!expected)
        return fail("");
    auto started = PrivateSession::start(plan, stage_);
    if (!started)
        return fail(started.error().description);
    session_ = std::move(*started);
    evidence_.defaultsBefore = session_->defaultDevices();
    if (evidence_.defaultsBefore.input.empty() || evidence_.defaultsBefore.output.empty())
        return fail("the sound server has no default devices");
    for (const auto provider : options_.keys)
        if (!KeychainStore::set(keys_.all().at(provider), keyAccount(provider)))
            return fail("the key could not be put into the keyring");
    return true;
}

ChildProgram Rehearsal::program(const char* title, const std::filesystem::path& file,
                                std::vector<std::string> arguments) const {
    ChildProgram program;
    program.title = title;
    program.arguments = std::move(arguments);
    program.arguments.insert(program.arguments.begin(), file);
    program.environment = session_->environment();
    program.errorFile = surroundings_.file(file.filename().string() + ".err");
    return program;
}

bool Rehearsal::startPrograms() {
    auto server = program("the voice server (velto-rehearsal-server)",
                          InstallTree::helpers() / "velto-rehearsal-server",
                          {"--scenario", options_.scenarioFile, "--certificate",
                           surroundings_.file("server.pem"), "--key", surroundings_.file("server.key")});
    for (const auto& [provider, key] : keys_.all())
        server.environment[keyVariable(provider)] = key;
    if (!options_.wire.empty())
        server.arguments.insert(server.arguments.end(), {"--wire", options_.wire});
    stage_.add(server, [this](const json::object& event) { evidence_.fromServer(event); });
    if (!stage_.waitUntil([&] { return evidence_.serverPort != 0; }, kToStart))
        return fail("the voice server did not start");
    const boost::json::object preferences{{"recordCalls", options_.record},
                                          {"useProcessTap", options_.tap},
                                          {"muteCallLocally", options_.mute},
                                          // The checklist of a first run would cover the call.
                                          {"hasCompletedSetup", true}};
    if (!surroundings_.writePreferences(options_.provider, evidence_.serverPort, preferences))
        return fail("the application's preferences could not be written");
    inquiry_ = std::make_unique<Inquiry>();
    return startApplication() && (!options_.tap || openPhone());
}

bool Rehearsal::startApplication() {
    auto velto = program(kApplicationTitle, InstallTree::programs() / "velto", {});
    if (options_.windows)
        velto.environment.merge(Environment(display_));
    else
        velto.arguments.emplace_back("--headless");
    application_ = stage_.add(velto, [](const json::object&) {});
    const auto deadline = std::chrono::steady_clock::now() + kToStart;
    while (stage_.failure().empty() && std::chrono::steady_clock::now() < deadline) {
        if (ask({{"cmd", "ping"}}))
            return true;
        stage_.waitUntil([] { return false; }, 20ms);
    }
    return fail("the application did not open its control socket");
}

bool Rehearsal::openPhone() {
    auto phone = program(kPhoneTitle, InstallTree::programs() / "velto-phone", {});
    phone.environment.merge(Environment(session_->phoneEnvironment()));
    stage_.add(phone, [](const json::object&) {});
    // Whoever asks for the running applications must find it, or there is nothing to tap.
    AtspiAccessibility accessibility([](const std::string&) {});
    LinuxWorkspace workspace(accessibility);
    const auto isListed = [&] {
        return evidence_.phone != 0 &&
               std::ranges::any_of(workspace.runningApplications(),
                                   [&](const RunningApplication& one) { return one.pid == evidence_.phone; });
    };
    return stage_.waitUntil(isListed, kToStart) || fail("the phone app did not open");
}

std::optional<json::object> Rehearsal::ask(json::object request) {
    auto reply = inquiry_->ask(std::move(request));
    if (!stage_.waitUntil([&] { return reply.wait_for(0s) == std::future_status::ready; }, kToAnswerRequest))
        return {};
    return reply.get();
}

bool Rehearsal::placeCall() {
    if (!surroundings_.writeShellLines(session_->environment(), InstallTree::programs()))
        return fail(surroundings_.shellLines().string() + " could not be written");
    explain();
    if (options_.wait)
        return waitForCall();
    const auto reply = ask({{"cmd", "call"}, {"number", scenario_.number}, {"goal", scenario_.goal}});
    const auto* ok = reply ? reply->if_contains("ok") : nullptr;
    if (!reply)
        return fail("the application did not answer the request for the call");
    if (ok == nullptr || *ok != true)
        return fail("the application did not take the call: " + json::serialize(*reply));
    if (textIn(*reply, "state") == "error")
        return fail("the application could not start the call; see its log");
    return true;
}

bool Rehearsal::waitForCall() {
    const std::chrono::duration<double> limit(scenario_.deadline);
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (stage_.failure().empty() && std::chrono::steady_clock::now() < deadline) {
        const auto status = ask({{"cmd", "status"}});
        const auto* session = status ? status->if_contains("session") : nullptr;
        if (session != nullptr && *session != 0)
            return true;
        stage_.waitUntil([] { return false; }, kBetweenLooks);
    }
    return fail("nobody placed the call within " + std::to_string(static_cast<int>(limit.count())) + " s");
}

void Rehearsal::explain() {
    out() << "From a second shell, while it runs:\n  . " << surroundings_.shellLines().string()
          << "\n  veltoctl status\n  veltoctl doctor\n  pactl list short sinks\nLog: "
          << surroundings_.applicationLog().string() << "\n\n";
    if (options_.wait)
        out() << "The call is yours, within " << scenario_.deadline << " s:\n  veltoctl call "
              << shellWord(scenario_.number) << " --goal " << shellWord(scenario_.goal)
              << " --follow --json | jq -c .";
    else
        out() << "Calling " << scenario_.number << ": " << scenario_.goal;
    out() << std::endl;
}

bool Rehearsal::isOver(const json::object& status) {
    const auto* running = status.if_contains("running");
    return running != nullptr && *running == false;
}

void Rehearsal::watchUsage() {
    const auto usage = processUsage(application_->pid());
    if (!usage || !evidence_.dialled)
        return;
    if (!usageAtDial_)
        usageAtDial_ = usage;
    measurements_.residentMB = std::max(measurements_.residentMB, usage->residentMB);
    measurements_.cpuPercent = cpuPercent(*usageAtDial_, *usage);
    measurements_.callSeconds = std::chrono::duration<double>(usage->at - usageAtDial_->at).count();
}

void Rehearsal::lookForKeysWhenDue() {
    if (!evidence_.dialled || evidence_.ended || linesAtLastLook_ == evidence_.spoken.size())
        return;
    linesAtLastLook_ = evidence_.spoken.size();
    keySearch_.lookAtProcess(kApplicationTitle, application_->pid());
    keySearch_.lookAtProcess(kPhoneTitle, evidence_.phone);
}

bool Rehearsal::follow() {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::duration<double>(scenario_.deadline);
    bool over = false;
    while (!over && stage_.failure().empty() && std::chrono::steady_clock::now() < deadline) {
        const auto status = ask({{"cmd", "status"}});
        over = status && isOver(*status);
        if (!over) {
            watchUsage();
            lookForKeysWhenDue();
        }
        if (const auto reply = ask({{"cmd", "transcript"}}))
            if (const auto* lines = reply->if_contains("lines"); lines != nullptr && lines->is_array()) {
                std::vector<std::string> texts;
                for (const auto& line : lines->get_array())
                    texts.emplace_back(line.is_string() ? std::string(line.get_string()) : "?");
                printer_.show(texts);
            }
        if (!over) {
            troublemaker_.makeWhenDue(*session_);
            stage_.waitUntil([] { return false; }, kBetweenLooks);
        }
    }
    if (!over) {
        printer_.finish();
        if (stage_.failure().empty())
            ask({{"cmd", "hangup"}});
        return fail("the call was not over " + std::to_string(static_cast<int>(scenario_.deadline)) +
                    " s after it was placed");
    }
    stage_.waitUntil([&] { return evidence_.ended && evidence_.serverClosed; }, kToSettle);
    printer_.finish();
    takeRecord();
    evidence_.defaultsAfter = session_->defaultDevices();
    if (options_.wait)
        stage_.waitUntil([] { return false; }, kToBeSeen);
    return stage_.failure().empty() || fail("");
}

bool Rehearsal::untilTheMoment(std::chrono::steady_clock::time_point& recordedSince) {
    const auto limit = std::chrono::milliseconds(static_cast<int>(scenario_.deadline * 1000));
    std::error_code error;
    const auto isRecording = [&] {
        return !options_.record || (std::filesystem::is_directory(surroundings_.recordings(), error) &&
                                    !std::filesystem::is_empty(surroundings_.recordings(), error));
    };
    if (!stage_.waitUntil(isRecording, limit))
        return fail("the call was not recorded");
    recordedSince = std::chrono::steady_clock::now();
    const auto hasHeardTwoLines = [&] {
        return std::ranges::count(evidence_.heardByServer, Mark::Place::end,
                                  [](const auto& heard) { return heard.mark.place; }) >= 2;
    };
    if (!stage_.waitUntil(hasHeardTwoLines, limit))
        return fail("the agent did not hear two lines");
    return true;
}

bool Rehearsal::killAndStartAgain() {
    std::chrono::steady_clock::time_point recordedSince;
    if (!untilTheMoment(recordedSince))
        return false;
    aftermath_.emplace();
    aftermath_->wasMuted = options_.tap && options_.mute;
    for (const auto& heard : evidence_.heardByServer)
        aftermath_->heardBefore.push_back(heard.mark);
    stage_.waitUntil([] { return false; }, kBeforeKill);
    aftermath_->defaultsAtKill = session_->defaultDevices();
    const std::chrono::duration<double> recorded = std::chrono::steady_clock::now() - recordedSince;
    aftermath_->recordedFor = recorded.count();
    out() << "\n(the application is killed and started again)" << std::endl;
    stage_.kill(*application_);
    if (options_.record)
        aftermath_->recording = hearRecording(surroundings_.recordings());
    const auto before = readFile(surroundings_.applicationLog()).value_or("").size();
    if (!startApplication())
        return false;
    aftermath_->log = readFile(surroundings_.applicationLog()).value_or("").substr(before);
    aftermath_->defaultsAfterStart = session_->defaultDevices();
    return stage_.failure().empty() || fail("");
}

void Rehearsal::takeRecord() {
    const auto reply = ask({{"cmd", "history"}});
    const auto* calls = reply ? reply->if_contains("calls") : nullptr;
    if (calls == nullptr || !calls->is_array() || calls->get_array().size() != 1 ||
        !calls->get_array().front().is_object())
        return;
    const auto& call = calls->get_array().front().get_object();
    const auto* duration = call.if_contains("duration");
    json::error_code error;
    evidence_.record = CallEntry{textIn(call, "number"), textIn(call, "transcript"),
                                 duration != nullptr ? duration->to_number<double>(error) : 0};
}

void Rehearsal::finish(bool played) {
    // A line that is still open is a fault of its own, which the end of the phone app would hide.
    if (evidence_.phone > 0 && evidence_.ended && !options_.tap)
        if (auto sentence = stage_.endOther(kPhoneTitle, evidence_.phone))
            evidence_.wrongEnds.push_back(std::move(*sentence));
    // The application before the inquiry, for a request that it does not answer to end.
    for (auto& sentence : stage_.end())
        evidence_.wrongEnds.push_back(std::move(sentence));
    inquiry_.reset();
    const auto log = readFile(surroundings_.applicationLog()).value_or("");
    evidence_.tapUsed = log.find("downlink: process tap on Phone.app") != std::string::npos;
    if (options_.record && !options_.kill)
        evidence_.recording = hearRecording(surroundings_.recordings());
    measurements_.applicationStats = lastStats(log);
    keySearch_.lookAtFolder(surroundings_.folder());
    if (!options_.wire.empty())
        keySearch_.lookAtFile(options_.wire);
    auto found = troubles_;
    if (evidence_.dialled && stage_.failure().empty())
        for (auto& fault :
             aftermath_ ? aftermathFaults(scenario_, evidence_, *aftermath_) : faults(scenario_, evidence_))
            found.push_back(std::move(fault));
    else if (played && found.empty())
        found.push_back(stage_.failure().empty() ? "the phone was never dialled" : stage_.failure());
    if (options_.json) {
        std::cout << json::serialize(summaryObject(scenario_, evidence_, measurements_, found)) << std::endl;
    } else {
        if (aftermath_)
            printAftermath(std::cout, *aftermath_);
        else if (played)
            printSummary(std::cout, evidence_, measurements_);
        printVerdict(std::cout, aftermath_ ? "the next start put everything back" : goodEnd(scenario_),
                     found);
    }
    if (!found.empty() && stage_.stopCode() == 0 && !log.empty())
        std::cerr << "\nThe last lines of the application's log:\n" << newestLines(log);
    if (options_.keepFolder)
        out() << "Kept: " << guardian_.folder().string() << std::endl;
    exitCode_ = stage_.stopCode() != 0 ? stage_.stopCode() : found.empty() ? 0 : 1;
}

} // namespace

int direct(const DirectorOptions& options, const GuardianLink& guardian) {
    return Rehearsal(options, guardian).run();
}

} // namespace velto::rehearsal

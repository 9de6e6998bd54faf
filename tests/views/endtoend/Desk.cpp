#include "tests/views/endtoend/Desk.h"

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/InstallTree.h"
#include "VeltoShared/control/ControlClient.h"
#include "VeltoShared/telephony/ElementWalk.h"

#include <boost/json.hpp>

#include <stdexcept>

namespace velto::test {
namespace {

using namespace std::chrono_literals;

constexpr auto kDeadline = 20s;
/// A look costs the application and the buses a good deal, and a call's sound must not suffer.
constexpr auto kBetweenLooks = 300ms;
/// Into a field, from its corner.
constexpr double kInside = 14;
constexpr double kBelowTabs = 200;
/// More than any pane is long.
constexpr int kTurns = 30;

} // namespace

Desk::Desk(const rehearsal::GuardianLink& guardian, const std::string& name)
    : link_(guardian.folder() / name, guardian.lifeline()), surroundings(link_.folder()), stage(link_) {
    std::filesystem::create_directories(link_.folder());
    Platform parts;
    parts.folders = &folders_;
    parts.secretStore = &keyring_;
    installPlatform(parts);
    if (!surroundings.prepare())
        throw std::runtime_error("no private folders");
    const std::filesystem::path scenario = VELTO_SCENARIOS "/callee-hangs-up.json";
    rehearsal::PrivateSessionPlan plan;
    plan.folder = link_.folder();
    plan.folders = surroundings.environment();
    plan.phone = InstallTree::programs() / "velto-phone";
    plan.scenario = scenario;
    plan.reports = surroundings.file("reports");
    stage.expect(
        plan.reports, [this](const boost::json::object& event) { evidence_.fromCallee(event); }, [] {});
    session = rehearsal::PrivateSession::start(plan, stage).value();
    accessibility_ = std::make_unique<AtspiAccessibility>([](const std::string&) {});
    workspace_ = std::make_unique<LinuxWorkspace>(*accessibility_);
    parts.accessibility = accessibility_.get();
    parts.workspace = workspace_.get();
    installPlatform(parts);
    screen = std::make_unique<Screen>(session->phoneEnvironment().at("DISPLAY"));
    auto server = program(InstallTree::helpers() / "velto-rehearsal-server",
                          {"--scenario", scenario, "--certificate", surroundings.file("server.pem"), "--key",
                           surroundings.file("server.key")});
    for (const auto& [provider, key] : keys.all())
        server.environment[rehearsal::keyVariable(provider)] = key;
    stage.add(server, [this](const boost::json::object& event) { evidence_.fromServer(event); });
    if (!stage.waitUntil([&] { return evidence_.serverPort != 0; }, kDeadline))
        throw std::runtime_error("the voice server did not start");
    surroundings.writePreferences(VoiceProvider::gemini, evidence_.serverPort, {});
    std::filesystem::create_directories(VELTO_PICTURES);
}

Desk::~Desk() {
    end();
    if (evidence_.phone > 0)
        stage.endOther("the phone app", evidence_.phone);
    stage.end();
    installPlatform({});
}

rehearsal::ChildProgram Desk::program(const std::filesystem::path& file,
                                      std::vector<std::string> arguments) const {
    const auto name = file.filename().string();
    rehearsal::ChildProgram program;
    program.title = name;
    program.arguments = std::move(arguments);
    program.arguments.insert(program.arguments.begin(), file);
    program.environment = session->environment();
    program.errorFile = surroundings.file(name + ".err");
    return program;
}

bool Desk::start(const rehearsal::Environment& others) {
    auto velto = program(InstallTree::programs() / "velto", {});
    velto.environment["DISPLAY"] = session->phoneEnvironment().at("DISPLAY");
    for (const auto& [name, value] : others)
        velto.environment[name] = value;
    application_ = stage.add(velto, [](const boost::json::object&) {});
    if (!eventually([] { return ControlClient::somebodyListens(); }) || !ControlClient::appIsRunning())
        return false;
    watchdog = std::make_unique<Watchdog>(application_->pid());
    return true;
}

void Desk::end() {
    if (application_ == nullptr)
        return;
    watchdog.reset();
    stage.kill(*application_);
    application_ = nullptr;
}

bool Desk::asked(const char* cmd, const std::function<bool(const boost::json::object&)>& isSo) {
    const auto reply = ControlClient::request({{"cmd", cmd}});
    return reply && isSo(*reply);
}

std::vector<Desk::Seen> Desk::look() {
    std::vector<Seen> found;
    ElementWalk::run(
        *accessibility_, accessibility_->application(application_->pid()), 20'000,
        [](const std::string&) {
            return ElementWalk::Plan{Attribute::title | Attribute::description | Attribute::value |
                                     Attribute::position};
        },
        [&](const ElementWalk::Visited& visited) {
            const auto& read = visited.attributes;
            const auto* const at = std::get_if<ScreenPoint>(&read.position);
            found.push_back({visited.element, visited.role, textOf(read.title), textOf(read.description),
                             textOf(read.value), at ? *at : ScreenPoint{}});
            return ElementWalk::Answer::descend;
        });
    return found;
}

std::optional<Desk::Seen> Desk::find(const std::string& role, const std::string& title) {
    for (auto& seen : look())
        if (seen.role == role && seen.title == title)
            return std::move(seen);
    return std::nullopt;
}

std::vector<std::string> Desk::missing(std::vector<std::string> texts) {
    for (const auto& seen : look())
        std::erase_if(texts, [&](const std::string& text) {
            return seen.title == text || seen.description == text || seen.value == text;
        });
    return texts;
}

bool Desk::press(const std::string& title, const std::string& role) {
    return eventually([&] {
        const auto seen = find(role, title);
        return seen && accessibility_->press(seen->element);
    });
}

bool Desk::enter(const std::string& field) {
    return eventually([&] {
        bool inGroup = false;
        for (const auto& seen : look()) {
            inGroup |= seen.role == "AXGroup" && seen.title == field;
            const bool isText = seen.role == "AXTextField" || seen.role == "AXTextArea";
            // A field for secrets has no name on the bus, but its group has one.
            if (isText && (seen.title == field || (inGroup && seen.title.empty()))) {
                screen->click(seen.at.x + kInside, seen.at.y + kInside);
                return true;
            }
        }
        return false;
    });
}

void Desk::scrollDown() {
    const auto tab = find("AXRadioButton", "General");
    for (int turn = 0; tab && turn < kTurns; ++turn)
        screen->click(tab->at.x, tab->at.y + kBelowTabs, Screen::Button::down);
}

bool Desk::eventually(const std::function<bool()>& isSo) {
    const auto deadline = std::chrono::steady_clock::now() + kDeadline;
    while (!isSo()) {
        if (!stage.failure().empty() || std::chrono::steady_clock::now() > deadline)
            return false;
        stage.waitUntil([] { return false; }, kBetweenLooks);
    }
    return true;
}

void Desk::picture(const std::string& name) {
    screen->takePicture(std::filesystem::path(VELTO_PICTURES) / (name + ".png"));
    watchdog->step("after " + name);
}

} // namespace velto::test

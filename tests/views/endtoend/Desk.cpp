#include "tests/views/endtoend/Desk.h"

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/InstallTree.h"
#include "VeltoShared/control/ControlClient.h"
#include "VeltoShared/telephony/ElementWalk.h"

#include <boost/json.hpp>

#include <X11/XKBlib.h>

#include <X11/extensions/XTest.h>

#include <algorithm>
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
    rehearsal::PrivateSessionPlan plan;
    plan.folder = link_.folder();
    plan.folders = surroundings.environment();
    plan.phone = InstallTree::programs() / "velto-phone";
    plan.scenario = InstallTree::resources() / "scenarios" / "callee-hangs-up.json";
    plan.reports = surroundings.file("reports");
    stage.expect(
        plan.reports, [this](const boost::json::object& event) { evidence_.fromCallee(event); }, [] {});
    session = rehearsal::PrivateSession::start(plan, stage).value();
    accessibility_ = std::make_unique<AtspiAccessibility>([](const std::string&) {});
    display_ = ::XOpenDisplay(session->phoneEnvironment().at("DISPLAY").c_str());
    if (display_ == nullptr)
        throw std::runtime_error("the display cannot be opened");
    auto server = program(InstallTree::helpers() / "velto-rehearsal-server",
                          {"--scenario", plan.scenario, "--certificate", surroundings.file("server.pem"),
                           "--key", surroundings.file("server.key")});
    for (const auto& [provider, key] : keys.all())
        server.environment[rehearsal::keyVariable(provider)] = key;
    stage.add(server, [this](const boost::json::object& event) { evidence_.fromServer(event); });
    if (!stage.waitUntil([&] { return evidence_.serverPort != 0; }, kDeadline))
        throw std::runtime_error("the voice server did not start");
    surroundings.writePreferences(VoiceProvider::gemini, evidence_.serverPort, {});
}

Desk::~Desk() {
    end();
    ::XCloseDisplay(display_);
    if (evidence_.phone > 0)
        stage.endOther("the phone app", evidence_.phone);
    stage.end();
    installPlatform({});
}

rehearsal::ChildProgram Desk::program(const std::filesystem::path& file,
                                      std::vector<std::string> arguments) const {
    const auto name = file.filename().string();
    arguments.insert(arguments.begin(), file);
    auto environment = session->environment();
    environment["DISPLAY"] = session->phoneEnvironment().at("DISPLAY");
    return {name, std::move(arguments), std::move(environment), surroundings.file(name + ".err")};
}

bool Desk::start(const rehearsal::Environment& others) {
    auto velto = program(InstallTree::programs() / "velto", {});
    for (const auto& [name, value] : others)
        velto.environment[name] = value;
    application_ = stage.add(velto, [](const boost::json::object&) {});
    if (!eventually(ControlClient::somebodyListens) || !ControlClient::appIsRunning())
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
            found.push_back({visited.element,
                             visited.role,
                             {textOf(read.title), textOf(read.description), textOf(read.value)},
                             at ? *at : ScreenPoint{}});
            return ElementWalk::Answer::descend;
        });
    return found;
}

std::optional<Desk::Seen> Desk::find(const char* role, const std::string& name) {
    for (auto& seen : look())
        if (seen.is(role, name))
            return std::move(seen);
    return std::nullopt;
}

std::vector<std::string> Desk::missing(std::vector<std::string> texts) {
    std::vector<std::string> missing;
    eventually([&] {
        missing = texts;
        for (const auto& seen : look())
            std::erase_if(missing,
                          [&](const auto& text) { return std::ranges::count(seen.texts, text) > 0; });
        return missing.empty();
    });
    return missing;
}

bool Desk::press(const std::string& name, const char* role) {
    return eventually([&] {
        const auto seen = find(role, name);
        return seen && accessibility_->press(seen->element);
    });
}

bool Desk::enter(const std::string& field) {
    return eventually([&] {
        bool inGroup = false;
        for (const auto& seen : look()) {
            inGroup |= seen.is("AXGroup", field);
            // A field for secrets has no name on the bus, but its group has one.
            const std::string name = inGroup && seen.texts[0].empty() ? "" : field;
            if (seen.is("AXTextField", name) || seen.is("AXTextArea", name)) {
                click(seen.at.x + kInside, seen.at.y + kInside);
                return true;
            }
        }
        return false;
    });
}

void Desk::paste(const std::string& text) {
    auto other = program("/proc/self/exe", {"copy"});
    other.input = text;
    copied_ = false;
    stage.add(other, [this](const boost::json::object& /*event*/) { copied_ = true; });
    stage.waitUntil([this] { return copied_; }, kDeadline);
    key("v", "Control_L");
}

void Desk::click(double x, double y, Button button) {
    ::XTestFakeMotionEvent(display_, -1, static_cast<int>(x), static_cast<int>(y), CurrentTime);
    for (const int down : {True, False})
        ::XTestFakeButtonEvent(display_, static_cast<unsigned>(button), down, CurrentTime);
    ::XSync(display_, False);
}

void Desk::press(unsigned long symbol, const char* held) {
    const auto send = [&](unsigned long key, int down) {
        ::XTestFakeKeyEvent(display_, ::XKeysymToKeycode(display_, key), down, CurrentTime);
    };
    if (held == nullptr &&
        ::XkbKeycodeToKeysym(display_, ::XKeysymToKeycode(display_, symbol), 0, 0) != symbol)
        held = "Shift_L";
    if (held != nullptr)
        send(::XStringToKeysym(held), True);
    send(symbol, True);
    send(symbol, False);
    if (held != nullptr)
        send(::XStringToKeysym(held), False);
    ::XSync(display_, False);
}

void Desk::key(const char* name, const char* held) {
    press(::XStringToKeysym(name), held);
}

void Desk::type(const std::string& text) {
    // The symbols of Latin characters have their numbers.
    for (const char letter : text)
        press(letter == '\n' ? ::XStringToKeysym("Return") : static_cast<unsigned char>(letter), nullptr);
}

void Desk::scrollDown() {
    const auto tab = find("AXRadioButton", "General");
    for (int turn = 0; tab && turn < kTurns; ++turn)
        click(tab->at.x, tab->at.y + kBelowTabs, Button::down);
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

} // namespace velto::test

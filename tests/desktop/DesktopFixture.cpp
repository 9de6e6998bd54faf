#include "tests/desktop/DesktopFixture.h"

#include "VeltoPlatform/linux/AtspiCalls.h"
#include "VeltoShared/telephony/AX.h"

namespace velto::test {

DesktopTest::DesktopTest(rehearsal::PrivateDesktopOptions options) {
    auto started = rehearsal::PrivateDesktop::start(folder_.path(),
                                                    *rehearsal::makePrivateFolders(folder_.path()), options);
    if (!started)
        throw std::runtime_error(started.error().description);
    desktop_ = std::move(*started);
    session_ = desktop_->environment();
    session_["DISPLAY"] = desktop_->display();
    session_["GSETTINGS_BACKEND"] = "memory";
    environment_.set(session_);
    renewBackend();
}

void DesktopTest::renewBackend() {
    accessibility_ = std::make_unique<AtspiAccessibility>(
        [this](const std::string& line) {
            const std::scoped_lock lock(mutex_);
            reports_.push_back(line);
        },
        desktop_->busAddress());
    auto table = LinuxWorkspace::defaultTable();
    const auto phone = table.front();
    for (const char* program : {"velto-scripted-target", "zenity", "gtk4-builder-tool", "sleep"})
        table.push_back({program, phone.bundleIDs});
    workspace_ = std::make_unique<LinuxWorkspace>(*accessibility_, table);
    auto parts = platform();
    parts.accessibility = accessibility_.get();
    parts.workspace = workspace_.get();
    installPlatform(parts);
}

ChildProcess DesktopTest::launch(const std::vector<std::string>& arguments, const std::string& input) {
    auto started = ChildProcess::start(
        {arguments.front(), arguments, session_, folder_.path() / "program.err", {}, input});
    EXPECT_TRUE(started);
    return std::move(*started);
}

DesktopTest::Target DesktopTest::launchTarget(const std::string& description) {
    Target target{launch({VELTO_SCRIPTED_TARGET}, description)};
    const auto line = nextLine(target);
    EXPECT_TRUE(line.starts_with("ready ")) << line;
    target.name = line.substr(std::min<std::size_t>(line.size(), 6));
    return target;
}

std::vector<ElementRef> DesktopTest::childrenOf(const Target& target) {
    auto answers = accessibility_->read(std::vector<Accessibility::Request>{
        {accessibility_->application(target.process.pid()), Attribute::children}});
    return std::get<std::vector<ElementRef>>(answers[0].children);
}

void DesktopTest::show(const Target& target, const std::string& description) {
    const auto session = Bus::open(desktop_->busAddress(), kDeadline);
    const auto where = session->method("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress");
    const auto bus = Bus::open(AtspiCalls::text(session->call(where, kDeadline)).value_or(""), kDeadline);
    const auto request = bus->method(target.name.c_str(), "/", "org.velto.Target", "Show");
    sd_bus_message_append(request.get(), "s", description.c_str());
    EXPECT_TRUE(bus->call(request, kDeadline));
}

Texts DesktopTest::buttons() {
    Texts names;
    for (const auto& button : AX::buttons())
        names.push_back(button.description);
    return names;
}

Texts DesktopTest::reports() {
    const std::scoped_lock lock(mutex_);
    return reports_;
}

} // namespace velto::test

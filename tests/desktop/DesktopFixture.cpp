#include "tests/desktop/DesktopFixture.h"

#include "VeltoPlatform/linux/AtspiCalls.h"

#include <thread>

namespace velto::test {

using namespace std::chrono_literals;

DesktopTest::DesktopTest(rehearsal::PrivateDesktopOptions options) {
    auto started = rehearsal::PrivateDesktop::start(folder_.path(),
                                                    *rehearsal::makePrivateFolders(folder_.path()), options);
    if (!started)
        throw std::runtime_error(started.error().description);
    desktop_ = std::move(*started);
    renewBackend();
}

DesktopTest::~DesktopTest() = default;

void DesktopTest::renewBackend() {
    accessibility_ = std::make_unique<AtspiAccessibility>(
        [this](const std::string& line) {
            const std::scoped_lock lock(mutex_);
            reports_.push_back(line);
        },
        desktop_->busAddress());
    auto table = LinuxWorkspace::defaultTable();
    table.front().executable = "velto-scripted-target";
    workspace_ = std::make_unique<LinuxWorkspace>(*accessibility_, table);
    auto parts = platform();
    parts.accessibility = accessibility_.get();
    parts.workspace = workspace_.get();
    installPlatform(parts);
}

ChildProcess DesktopTest::launch(const std::vector<std::string>& arguments, const std::string& input,
                                 bool lines) {
    rehearsal::ChildProgram program;
    program.title = arguments.front();
    program.arguments = arguments;
    program.environment = desktop_->environment();
    program.environment["DISPLAY"] = desktop_->display();
    program.environment["GSETTINGS_BACKEND"] = "memory";
    program.errorFile = folder_.path() / "program.err";
    if (!lines)
        program.outputFile = folder_.path() / "program.out";
    program.input = input;
    auto started = ChildProcess::start(program);
    EXPECT_TRUE(started);
    return std::move(*started);
}

DesktopTest::Target DesktopTest::launchTarget(const std::string& description) {
    Target target{launch({VELTO_SCRIPTED_TARGET}, description, true)};
    const auto line = nextLine(target);
    EXPECT_TRUE(line.starts_with("ready ")) << line;
    target.name = line.substr(std::min<std::size_t>(line.size(), 6));
    return target;
}

std::string DesktopTest::nextLine(Target& target) {
    if (!eventually([&] { return !hasSaidNothingElse(target); }))
        return "";
    auto line = std::move(target.lines.front());
    target.lines.pop_front();
    return line;
}

bool DesktopTest::hasSaidNothingElse(Target& target) {
    for (auto& line : target.process.readLines())
        target.lines.push_back(std::move(line));
    return target.lines.empty();
}

std::vector<ElementRef> DesktopTest::childrenOf(const Target& target) {
    auto answers = accessibility_->read(std::vector<Accessibility::Request>{
        {accessibility_->application(target.process.pid()), Attribute::children}});
    return std::get<std::vector<ElementRef>>(answers[0].children);
}

std::string DesktopTest::accessibilityAddress() {
    const auto session = Bus::open(desktop_->busAddress(), kDeadline);
    return AtspiCalls::text(
               session->call(session->method("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"),
                             kDeadline))
        .value_or("");
}

void DesktopTest::show(const Target& target, const std::string& description) {
    const auto bus = Bus::open(accessibilityAddress(), kDeadline);
    const auto request = bus->method(target.name.c_str(), "/", "org.velto.Target", "Show");
    sd_bus_message_append(request.get(), "s", description.c_str());
    EXPECT_TRUE(bus->call(request, kDeadline));
}

bool DesktopTest::eventually(const std::function<bool()>& isSo) {
    const auto deadline = std::chrono::steady_clock::now() + kDeadline;
    while (!isSo()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

std::vector<std::string> DesktopTest::reports() {
    const std::scoped_lock lock(mutex_);
    return reports_;
}

} // namespace velto::test

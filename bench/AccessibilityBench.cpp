// Reading a window's texts and buttons: our walk beside libatspi's, on the same window in the same run, and
// the processor time of watching a small banner.
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/LinuxWorkspace.h"
#include "VeltoShared/telephony/AX.h"
#include "VeltoShared/telephony/ElementWalk.h"
#include "rehearsal/PrivateDesktop.h"
#include "tests/support/TemporaryFolder.h"

#include <atspi/atspi.h>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace velto {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using rehearsal::ChildProcess;

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// What a walk came across; the same for both ways, or the comparison is void.
struct Seen {
    int elements = 0;
    std::size_t letters = 0;
    bool operator==(const Seen&) const = default;
};

Seen ourWalk(Accessibility& accessibility, pid_t pid) {
    Seen seen;
    ElementWalk::run(
        accessibility, accessibility.application(pid), AX::kBudget,
        [](const std::string& role) {
            ElementWalk::Plan plan;
            if (role == "AXStaticText")
                plan.attributes = Attribute::description | Attribute::value;
            else if (role == "AXButton")
                plan.attributes = Attribute::description;
            return plan;
        },
        [&](const ElementWalk::Visited& visited) {
            ++seen.elements;
            seen.letters +=
                textOf(visited.attributes.value).size() + textOf(visited.attributes.description).size();
            return ElementWalk::Answer::descend;
        });
    return seen;
}

std::size_t letters(char* text) {
    const std::size_t length = text != nullptr ? std::string_view(text).size() : 0;
    g_free(text);
    return length;
}

void theirWalk(AtspiAccessible* element, Seen& seen) {
    ++seen.elements;
    const auto role = atspi_accessible_get_role(element, nullptr);
    // What is hidden is no part of what is shown.
    if (auto* states = atspi_accessible_get_state_set(element))
        g_object_unref(states);
    if (role == ATSPI_ROLE_LABEL) {
        seen.letters += letters(atspi_accessible_get_name(element, nullptr));
        seen.letters += letters(atspi_accessible_get_description(element, nullptr));
    } else if (role == ATSPI_ROLE_PUSH_BUTTON) {
        seen.letters += letters(atspi_accessible_get_name(element, nullptr));
    }
    const int count = atspi_accessible_get_child_count(element, nullptr);
    for (int i = 0; i < count; ++i)
        if (auto* child = atspi_accessible_get_child_at_index(element, i, nullptr)) {
            theirWalk(child, seen);
            g_object_unref(child);
        }
}

AtspiAccessible* theirApplication(pid_t pid) {
    auto* const desktop = atspi_get_desktop(0);
    for (int i = 0; i < atspi_accessible_get_child_count(desktop, nullptr); ++i)
        if (auto* child = atspi_accessible_get_child_at_index(desktop, i, nullptr)) {
            if (static_cast<pid_t>(atspi_accessible_get_process_id(child, nullptr)) == pid)
                return child;
            g_object_unref(child);
        }
    return nullptr;
}

template <class Walk>
double milliseconds(Walk walk) {
    const auto begin = Clock::now();
    walk();
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

double processorSeconds() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](timeval time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

class Bench {
  public:
    explicit Bench(rehearsal::PrivateDesktop& desktop)
        : desktop_(desktop), accessibility_({}, desktop.busAddress()),
          workspace_(accessibility_, {{"velto-bench-window",
                                       {std::string(AX::kPhoneApp), std::string(AX::kNotificationCenter)}}}) {
        Platform parts;
        parts.accessibility = &accessibility_;
        parts.workspace = &workspace_;
        installPlatform(parts);
    }

    bool compare(int elements, int rounds, double aim) {
        const auto window = open(elements);
        if (!window)
            return false;
        std::vector<double> ours;
        std::vector<double> theirs;
        Seen we;
        Seen they;
        for (int round = 0; round < rounds; ++round) {
            ours.push_back(milliseconds([&] { we = ourWalk(accessibility_, window->pid()); }));
            they = {};
            auto* const application = theirApplication(window->pid());
            if (!application)
                return false;
            theirs.push_back(milliseconds([&] { theirWalk(application, they); }));
            // What it keeps between walks is out of date without an event loop.
            atspi_accessible_clear_cache(application);
            g_object_unref(application);
        }
        std::printf("%d elements: ours %.1f ms (aim: at most %.0f), libatspi %.1f ms, ratio %.1f (aim: at "
                    "least 3)%s\n",
                    we.elements, median(ours), aim, median(theirs), median(theirs) / median(ours),
                    we == they ? "" : "; NOT THE SAME ELEMENTS");
        return we == they && we.elements == elements;
    }

    /// Two looks a second, each at all that a look can take: access, processes, three walks.
    bool watch(int looks) {
        const auto window = open(17);
        if (!window)
            return false;
        std::size_t buttons = 0;
        const double before = processorSeconds();
        for (int look = 0; look < looks; ++look) {
            buttons += AX::buttons().size();
            AX::texts();
            AX::texts(std::string(AX::kPhoneApp));
        }
        const double each = (processorSeconds() - before) / looks;
        std::printf(
            "watching 17 elements: %.2f ms of processor time a look, every 0.5 s %.2f %% of a core (aim: "
            "under 0.5)\n",
            each * 1e3, each / 0.5 * 100);
        return buttons > 0;
    }

  private:
    std::optional<ChildProcess> open(int elements) {
        rehearsal::ChildProgram program;
        program.arguments = {BENCH_WINDOW, std::to_string(elements)};
        program.title = program.arguments.front();
        program.environment = desktop_.environment();
        program.environment["DISPLAY"] = desktop_.display();
        auto started = ChildProcess::start(program);
        if (!started)
            return std::nullopt;
        const auto deadline = Clock::now() + 20s;
        while (ourWalk(accessibility_, started->pid()).elements < elements) {
            if (Clock::now() > deadline)
                return std::nullopt;
            std::this_thread::sleep_for(50ms);
        }
        return started;
    }

    rehearsal::PrivateDesktop& desktop_;
    AtspiAccessibility accessibility_;
    LinuxWorkspace workspace_;
};

int run(const std::filesystem::path& folder) {
    const auto environment = rehearsal::makePrivateFolders(folder);
    if (!environment)
        return 1;
    const auto started =
        rehearsal::PrivateDesktop::start(folder, *environment, {.accessibility = true, .display = true});
    if (!started) {
        std::fprintf(stderr, "%s\n", started.error().description.c_str());
        return 1;
    }
    // libatspi asks the environment for the session.
    ::setenv("DBUS_SESSION_BUS_ADDRESS", (*started)->busAddress().c_str(), 1);
    ::unsetenv("AT_SPI_BUS_ADDRESS");
    ::unsetenv("DISPLAY");
    atspi_init();
    Bench bench(**started);
    bool good = bench.compare(50, 21, 12);
    good = bench.compare(2000, 5, 450) && good;
    good = bench.watch(200) && good;
    return good ? 0 : 1;
}

} // namespace
} // namespace velto

int main() {
    return velto::run(velto::test::TemporaryFolder().path());
}

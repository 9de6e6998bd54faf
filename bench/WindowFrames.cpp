// velto-frames WIDTH HEIGHT: what the windows' thread does for one frame, over a simulated computer: a line
// more in a transcript that grows, a transcript of three hours, ten thousand calls; and the memory of all
// panes. Time is this thread's processor time, from the change to the frame on the screen.
#include "rehearsal/process/TextFile.h"
#include "tests/views/ScreenReader.h"
#include "tests/views/WindowBench.h"

#include <QGuiApplication>
#include <QTest>

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace velto {
namespace {

using namespace std::chrono_literals;
using test::ScreenReader;
using test::WindowBench;

constexpr int kLines = 2000;
constexpr int kCalls = 10'000;
constexpr int kTenth = kLines / 10;
constexpr double kAim = 33; // ms
constexpr const char* kNumber = "+15550126";

double processorTime() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1e3 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e6;
}

std::string sentence(int number) {
    static const std::vector<std::string> words{"we",    "could", "offer", "a",      "table",
                                                "for",   "two",   "at",    "half",   "past",
                                                "seven", "near",  "the",   "window", "tonight"};
    std::string text = std::to_string(number);
    for (int i = 0; i < 6 + number * 7 % 23; ++i)
        text += ' ' + words[static_cast<std::size_t>(number * 5 + i) % words.size()];
    return text;
}

class Frames {
  public:
    explicit Frames(QQuickWindow& window)
        : shown_(QObject::connect(
              &window, &QQuickWindow::frameSwapped, &window, [this] { note(); }, Qt::DirectConnection)) {
        waitForQuiet();
    }
    ~Frames() { QObject::disconnect(shown_); }
    Frames(const Frames&) = delete;
    Frames& operator=(const Frames&) = delete;

    /// The longest that a change or one of the frames after it takes, ms.
    double work(const std::function<void()>& change) {
        const int before = count_;
        longest_ = 0;
        last_ = processorTime();
        change();
        for (int i = 0; i < 1000 && count_ == before; ++i)
            QTest::qWait(1);
        waitForQuiet();
        return longest_;
    }
    void waitForQuiet() {
        constexpr int kLonger = 12; // ms than Qt waits before it draws
        for (int last = -1; last != count_;) {
            last = count_;
            QTest::qWait(kLonger);
        }
    }

  private:
    void note() {
        const double time = processorTime();
        longest_ = std::max(longest_, time - last_);
        last_ = time;
        ++count_;
    }

    QMetaObject::Connection shown_;
    int count_ = 0;
    double last_ = 0;
    double longest_ = 0;
};

void tell(const char* what, double time) {
    std::printf("%s: %.1f ms (aim: at most %.0f; ratio %.2f)\n", what, time, kAim, time / kAim);
}

void growing(QSize size) {
    WindowBench bench;
    bench.addKey();
    auto& window = bench.open();
    window.resize(size);
    bench.goLive(kNumber);
    Frames frames(window);
    std::vector<double> times;
    for (int i = 0; i < kLines; ++i)
        times.push_back(frames.work([&] {
            bench.agents.latest->log((i % 2 == 0 ? "caller: " : "agent: ") + sentence(i));
            bench.agents.latest->log("turn complete");
            bench.settle();
        }));
    if (bench.app.nativeSession->liveTranscript().size() != kLines || window.size() != size)
        std::printf("not measured: the window or the transcript is another than meant\n");
    const auto median = [](std::vector<double> some) {
        std::ranges::nth_element(some, some.begin() + static_cast<std::ptrdiff_t>(some.size() / 2));
        return some[some.size() / 2];
    };
    tell("a transcript grows to 2 000 lines: longest frame", *std::ranges::max_element(times));
    const double early = median({times.begin(), times.begin() + kTenth});
    const double late = median({times.end() - kTenth, times.end()});
    std::printf("  median %.1f ms; the last tenth to the first: %.2f\n", median(times), late / early);
    std::fflush(stdout);
}

void click(QQuickWindow& window, const QQuickItem& item) {
    QTest::mouseClick(&window, Qt::LeftButton, {},
                      item.mapToScene({item.width() / 2, item.height() / 2}).toPoint());
}

void longLists(QSize size) {
    WindowBench bench;
    bench.addKey();
    std::vector<CallRecord> calls(kCalls);
    for (int i = 0; i < kCalls; ++i) {
        calls[static_cast<std::size_t>(i)].number = "+1555" + std::to_string(1'000'000 + i);
        calls[static_cast<std::size_t>(i)].started = CallRecord::Time::of(bench.loop.clock.now());
    }
    calls[0].number = kNumber;
    calls[0].duration = 3 * 3600;
    for (int i = 0; i < 3 * 3600 / 4; ++i) // one each 4 s
        calls[0].transcript += (i % 2 == 0 ? "Caller: " : "Agent: ") + sentence(i) + "\n";
    bench.history.records.set(std::move(calls));

    bench.computer.preferences.set("velto.settingsTab", std::string("debug"));
    auto& window = bench.open(QStringLiteral("SettingsView.qml"));
    window.resize(size);
    const ScreenReader reader(window, [&] { bench.settle(); });
    Frames frames(window);
    tell("10 000 calls: the pane of the history is opened",
         frames.work([&] { reader.pick(QStringLiteral("Pane"), QStringLiteral("History")); }));
    tell("10 000 calls: one more", frames.work([&] {
        bench.addCall("+15550199", 1min, 12);
        bench.settle();
    }));
    frames.waitForQuiet();
    const auto* const row = reader.item(QAccessible::ListItem, QString::fromLatin1(kNumber));
    if (row == nullptr)
        return;
    tell("a transcript of 3 hours is opened", frames.work([&] { click(window, *row); }));
    frames.waitForQuiet();
    auto* const lines = reader.item(QAccessible::List, QStringLiteral("Transcript"));
    if (lines == nullptr)
        return;
    lines->forceActiveFocus();
    double longest = 0;
    for (int i = 0; i < 100; ++i)
        longest = std::max(longest, frames.work([&] { QTest::keyClick(&window, Qt::Key_PageUp); }));
    tell("a page of it: longest of 100", longest);
    std::fflush(stdout);
}

long residentMegabytes() {
    const auto text = rehearsal::readFile("/proc/self/smaps_rollup").value_or("");
    const auto at = text.find("Rss:");
    return at == std::string::npos ? 0 : std::atol(text.c_str() + at + 4) / 1000;
}

void panes() {
    WindowBench bench;
    bench.addKey();
    bench.addCall(kNumber, 2min, 83);
    bench.computer.preferences.set("velto.settingsTab", std::string("general"));
    auto& window = bench.open(QStringLiteral("SettingsView.qml"));
    const ScreenReader reader(window, [&] { bench.settle(); });
    Frames frames(window);
    frames.waitForQuiet();
    const long before = residentMegabytes();
    for (const char* tab : {"Readiness", "Debug"}) {
        reader.press(QString::fromLatin1(tab), QAccessible::PageTab);
        frames.waitForQuiet();
    }
    for (const char* pane : {"Native", "Recordings", "History", "Diagnostics", "Routing", "Drivers"}) {
        reader.pick(QStringLiteral("Pane"), QString::fromLatin1(pane));
        frames.waitForQuiet();
    }
    std::printf("every pane was shown: %ld MB resident; with the first alone: %ld MB\n", residentMegabytes(),
                before);
}

} // namespace
} // namespace velto

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    ::qputenv("QT_QUICK_BACKEND", "software");
    QQuickWindow::setTextRenderType(QQuickWindow::NativeTextRendering);
    const QGuiApplication application(argc, argv);
    const double scale = application.devicePixelRatio();
    const QSize size = QSizeF(std::atoi(argv[1]) / scale, std::atoi(argv[2]) / scale).toSize();
    velto::panes();
    velto::growing(size);
    velto::longLists(size);
    return 0;
}

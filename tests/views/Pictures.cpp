// velto-shots: pictures of the windows in every state, light and dark, for the documentation.
#include "VeltoApp/views/items/Appearance.h"
#include "tests/views/ScreenReader.h"
#include "tests/views/WindowBench.h"

#include <QDir>
#include <QGuiApplication>
#include <QHash>
#include <QImage>
#include <QQmlEngine>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <iostream>
#include <string>

namespace velto::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kNumber = "+15550126";

/// With the 256 colours that it has most of: windows have few, and blends of them at the edges of letters.
QImage smaller(const QImage& picture) {
    constexpr qsizetype kColours = 256;
    QHash<QRgb, int> pixels;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            ++pixels[picture.pixel(x, y)];
    auto colours = pixels.keys();
    std::ranges::sort(colours, std::greater(), [&](QRgb colour) { return pixels[colour]; });
    colours.resize(std::min(colours.size(), kColours));
    return picture.convertToFormat(QImage::Format_Indexed8, colours, Qt::AvoidDither);
}

class Photographer {
  public:
    explicit Photographer(QString folder) : folder_(std::move(folder)) {}

    void takeAll() {
        firstRun();
        calling();
        failed();
        settings();
    }

  private:
    void firstRun() {
        WindowBench bench;
        bench.computer.desktop.setTrusted(false);
        bench.drivers.clear();
        bench.computer.audio.removeDevice("VeltoLoop 2ch");
        take(bench.open(), "main-not-ready");
    }

    void calling() {
        WindowBench bench;
        bench.addKey();
        addCalls(bench);
        auto& window = bench.open();
        bench.app.agent->goal.set(
            "Book a table for two on Friday at eight, under the name of Ellis. If eight is "
            "taken, any time from seven to nine will do.");
        bench.app.nativeSession->number.set(kNumber);
        bench.settle();
        take(window, "main-idle");
        bench.app.nativeSession->start("Book a table", true);
        bench.advance(700ms);
        take(window, "main-dialing");
        bench.line.answered = true;
        bench.advance(3s);
        bench.say(
            {"caller: Good evening, Trattoria Lucia.",
             "agent: Good evening! I'm calling on behalf of Ellis. "
             "Do you have a table for two on Friday at eight?",
             "turn complete",
             "caller: Friday at eight… I'm afraid we are full then. We could offer seven thirty or nine.",
             "agent: Seven thirty would be perfect, thank you.", "turn complete",
             "caller: Lovely. And the name was Ellis?", "agent: Yes, Ellis: E, L, L, I, S."});
        bench.advance(64s);
        take(window, "main-live");
        window.close();
        bench.settle();
        take(window, "main-leave");
    }

    void failed() {
        WindowBench bench;
        bench.addKey();
        addCalls(bench);
        bench.agents.failure = "the provider refused the key (401)";
        auto& window = bench.open();
        bench.goLive(kNumber);
        bench.line.active = false;
        bench.advance(3s);
        window.resize(window.minimumSize());
        bench.settle();
        take(window, "main-failed-small");
    }

    void settings() {
        WindowBench bench;
        bench.addKey();
        addCalls(bench);
        auto calls = bench.history.records();
        calls.front().recordingPath = addRecording(bench).string();
        bench.history.records.set(std::move(calls));
        bench.drivers.clear();
        bench.settings.monitorDevice.set("Speaker");
        bench.computer.preferences.set("velto.settingsTab", std::string("debug"));
        auto& window = bench.open(QStringLiteral("SettingsView.qml"));
        const ScreenReader reader(window, [&] { bench.settle(); });
        bench.goLive(kNumber);
        for (const char* pane : {"Native", "Recordings", "History", "Diagnostics", "Routing", "Drivers"}) {
            reader.pick("Pane", pane);
            reader.press("Run checks");
            take(window, QStringLiteral("settings-") + pane);
            if (reader.press(kNumber, QAccessible::ListItem)) {
                take(window, "settings-transcript");
                reader.press("Done");
            }
        }
        for (const char* tab : {"General", "Readiness"}) {
            reader.press(tab, QAccessible::PageTab);
            take(window, QStringLiteral("settings-") + tab);
        }
    }

    /// Syllables with pauses between sentences.
    static std::filesystem::path addRecording(WindowBench& bench) {
        std::vector<std::int16_t> sound(std::size_t{40} * 16'000);
        for (std::size_t i = 0; i < sound.size(); ++i) {
            const double time = static_cast<double>(i) / 16'000;
            const double loud =
                std::sin(time * 1.3) > -0.3 ? std::abs(std::sin(time * 9) * std::sin(time * 2.1)) : 0;
            sound[i] = static_cast<std::int16_t>(14'000 * loud * std::sin(time * 900));
        }
        return bench.addRecording("call-20261120-141503.wav", sound);
    }

    static void addCalls(WindowBench& bench) {
        bench.addCall("+442079460018", 9 * 24h, 12);
        bench.addCall("+15550199", 27h, 754);
        bench.addCall("", 5h, 41);
        bench.addCall("0043-1-TRATTORIA-LUCIA-VIENNA-0123456789", 49min, 3725);
        bench.addCall(kNumber, 2min, 83);
    }

    void take(QQuickWindow& window, const QString& name) {
        const ScreenReader reader(window, [] {});
        if (auto* const recording = reader.item(QAccessible::Slider, "Place in the recording"))
            recording->setProperty("value", 13); // seconds that have been played
        for (const bool dark : {true, false}) {
            Appearance::of(*qmlEngine(&window)).setDark(dark);
            constexpr int kFrames = 3; // each lays out what the one before has made another size
            for (int i = 0; i < kFrames; ++i) {
                window.grabWindow();
                QCoreApplication::processEvents();
            }
            const auto file = folder_ + '/' + name + (dark ? "-dark.png" : "-light.png");
            if (!smaller(window.grabWindow()).save(file))
                qFatal("velto-shots: cannot write %s", qPrintable(file));
        }
    }

    QString folder_;
};

} // namespace
} // namespace velto::test

int main(int argc, char** argv) {
    using namespace velto::test;
    WindowBench::prepareQt();
    ::qputenv("QT_SCALE_FACTOR", "2");
    const QGuiApplication application(argc, argv);
    if (argc != 2) {
        std::cerr << "usage: velto-shots FOLDER\n";
        return 2;
    }
    QDir().mkpath(QString::fromLocal8Bit(argv[1]));
    Photographer(QString::fromLocal8Bit(argv[1])).takeAll();
}

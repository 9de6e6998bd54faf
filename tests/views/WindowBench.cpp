#include "tests/views/WindowBench.h"

#include "VeltoShared/audio/WavFile.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/core/SecretKey.h"

#include <QCoreApplication>
#include <QtQml/qqmlextensionplugin.h>

#include <stdexcept>

Q_IMPORT_QML_PLUGIN(VeltoPlugin)

namespace velto::test {

using namespace std::chrono_literals;

void WindowBench::prepareQt() {
    ::qputenv("QT_QPA_PLATFORM", "offscreen");
    ::qputenv("QT_QUICK_BACKEND", "software");
    // What this platform cannot do to windows does not matter here.
    ::qputenv("QT_LOGGING_RULES", "qt.qpa.warning=false");
}

WindowBench::WindowBench()
    : app{.agent = AgentState::make(settings,
                                    [](VoiceProvider, std::string key) -> asio::awaitable<bool> {
                                        co_return key.starts_with("good");
                                    }),
          .nativeSession = std::make_shared<NativeCallSession>(
              SessionCollaborators{&line, &audio, &agents, this}, settings),
          .setup = std::make_shared<ReadinessState>([this] { return drivers; }),
          .history = history,
          .settings = settings} {
    computer.audio.addUsualDevices();
    settings.hasCompletedSetup.set(true);
}

/// What still waits would be left in a circle of its waits.
WindowBench::~WindowBench() {
    engine_ = nullptr;
    model = nullptr;
    app.nativeSession->stop();
    loop.advance(60s);
}

void WindowBench::addKey() {
    KeychainStore::set("good key", SecretKey::geminiAPIKey);
    app.agent->refreshKey();
    settle();
}

void WindowBench::addCall(std::string number, Clock::Duration ago, double seconds) {
    const auto started = loop.clock.now() - std::chrono::duration_cast<Clock::WallTime::duration>(ago);
    history.insertFirst({.number = std::move(number),
                         .started = CallRecord::Time::of(started),
                         .duration = seconds,
                         .transcript = "Agent: Hello.\nCaller: Hello."});
}

std::filesystem::path WindowBench::addRecording(const char* name, const std::vector<std::int16_t>& samples) {
    const auto path = AppPaths::recordings() / name;
    WavFile file(path, 16'000);
    file.append(samples);
    file.finish();
    return path;
}

QQuickWindow& WindowBench::open(const QString& file) {
    engine_ = nullptr;
    model = std::make_unique<AppModel>(app);
    engine_ = std::make_unique<QQmlApplicationEngine>();
    engine_->setInitialProperties({{"app", QVariant::fromValue(model.get())}});
    engine_->load(QUrl(QStringLiteral("qrc:/Velto/") + file));
    if (engine_->rootObjects().isEmpty())
        throw std::runtime_error("the window cannot be loaded");
    auto& window = *qobject_cast<QQuickWindow*>(engine_->rootObjects().first());
    window.show();
    window.requestActivate();
    settle();
    return window;
}

void WindowBench::settle() {
    constexpr int kRounds = 5; // one loop's work may be the other's
    for (int i = 0; i < kRounds; ++i) {
        loop.drain();
        QCoreApplication::processEvents();
    }
}

void WindowBench::advance(Clock::Duration duration) {
    loop.advance(duration);
    settle();
}

void WindowBench::say(std::initializer_list<std::string> lines) {
    for (const auto& text : lines)
        agents.latest->log(text);
    settle();
}

void WindowBench::goLive(const char* number) {
    app.nativeSession->number.set(number);
    app.nativeSession->start("Book a table", true);
    line.answered = true;
    advance(2s);
}

} // namespace velto::test

#include "tests/views/WindowTest.h"

#include <QAbstractEventDispatcher>
#include <QAccessibleActionInterface>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QQmlContext>
#include <QUrl>
#include <QtQml/qqmlextensionplugin.h>

#include <cstdlib>

Q_IMPORT_QML_PLUGIN(VeltoPlugin)

namespace velto::test {
namespace {

void startQt() {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    static int count = 1;
    static char name[] = "windows";
    static char* arguments[] = {name, nullptr};
    static QGuiApplication application(count, arguments);
    application.setQuitOnLastWindowClosed(false);
}

struct QtStarted {
    QtStarted() { startQt(); }
};

bool isVisible(const QAccessibleInterface& element) {
    return !element.state().invisible && !element.rect().isEmpty();
}

/// Calls `use` with each visible element, parents first, until it answers true.
template <class Use>
QAccessibleInterface* search(QAccessibleInterface* element, const Use& use) {
    if (!element)
        return nullptr;
    if (use(*element))
        return element;
    for (int i = 0; i < element->childCount(); ++i)
        if (auto* const child = element->child(i); child && isVisible(*child))
            if (auto* const found = search(child, use))
                return found;
    return nullptr;
}

} // namespace

WindowTest::WindowTest()
    : app{std::make_shared<AudioState>(),
          std::make_shared<DriverState>([this](const std::string& line) {
              commands.push_back(line);
              return Helper::Result{};
          }),
          nullptr,
          std::make_shared<RecordingState>(),
          nullptr,
          std::make_shared<ReadinessState>([this] { return drivers; }),
          history,
          settings} {
    static const QtStarted started;
    computer.audio.addUsualDevices();
    MainThread::install(QtExecutor(loop));
    Background::install(QtExecutor(loop));
    Blocking::install(QtExecutor(loop));
    Clock::install(&clock);
    app.agent = AgentState::make(settings, [this](VoiceProvider provider, std::string key) {
        return validate(provider, std::move(key));
    });
    app.nativeSession =
        std::make_shared<NativeCallSession>(SessionCollaborators{&line_, &sound_, &agents_, &archive_}, settings);
    model = std::make_unique<AppModel>(app);
}

WindowTest::~WindowTest() {
    close();
    app.nativeSession->stop();
    clock.advance(60s);
    model.reset();
    Clock::install(nullptr);
    MainThread::install({});
    Background::install({});
    Blocking::install({});
}

/// Any provider: takes three seconds, and accepts any key that begins with "good".
asio::awaitable<bool> WindowTest::validate(VoiceProvider provider, std::string key) {
    validated.push_back(std::string(rawValue(provider)) + " " + key);
    co_await Clock::shared().sleep(3s);
    co_return key.starts_with("good");
}

void WindowTest::open(const QString& file) {
    engine = std::make_unique<QQmlApplicationEngine>();
    engine->setInitialProperties({{"app", QVariant::fromValue(model.get())}});
    engine->load(QUrl("qrc:/Velto/" + file));
    ASSERT_FALSE(engine->rootObjects().isEmpty());
    window = qobject_cast<QQuickWindow*>(engine->rootObjects().first());
    ASSERT_NE(window, nullptr);
    window->show();
    window->requestActivate();
    settle();
}

void WindowTest::close() {
    window = nullptr;
    engine.reset();
    settle();
}

void WindowTest::settle() {
    // What is animated would keep a loop without an end busy.
    for (int i = 0; i < 8; ++i)
        QCoreApplication::processEvents();
}

QAccessibleInterface* WindowTest::find(QAccessible::Role role, const QString& name) const {
    return search(QAccessible::queryAccessibleInterface(window), [&](const QAccessibleInterface& element) {
        return element.role() == role && element.text(QAccessible::Name) == name;
    });
}

bool WindowTest::says(const QString& text) const {
    return shows(QAccessible::StaticText, text) || shows(QAccessible::Heading, text);
}

bool WindowTest::press(const QString& name, QAccessible::Role role) {
    auto* const element = find(role, name);
    if (!element || element->state().disabled || !element->actionInterface())
        return false;
    element->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    settle();
    // What is to be seen comes with a frame, and those come in real time.
    window->grabWindow();
    return true;
}

QQuickItem* WindowTest::item(QAccessible::Role role, const QString& name) const {
    auto* const element = find(role, name);
    return element ? qobject_cast<QQuickItem*>(element->object()) : nullptr;
}

void WindowTest::key(Qt::Key key, const QString& text) {
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(window, &event);
    }
    settle();
}

void WindowTest::pick(const QString& picker, const QString& choice) {
    ASSERT_TRUE(press(picker, QAccessible::ComboBox)) << picker.toStdString();
    ASSERT_TRUE(press(choice, QAccessible::ListItem)) << choice.toStdString();
}

std::vector<std::string> WindowTest::nameless() const {
    std::vector<std::string> found;
    search(QAccessible::queryAccessibleInterface(window), [&](const QAccessibleInterface& element) {
        if (element.state().focusable && element.text(QAccessible::Name).isEmpty())
            found.emplace_back(element.object()->metaObject()->className());
        return false;
    });
    return found;
}

void WindowTest::picture(const std::string& name) {
    if (const auto folder = qEnvironmentVariable("VELTO_PICTURES"); !folder.isEmpty())
        window->grabWindow().save(folder + "/" + QString::fromStdString(name) + ".png");
}

} // namespace velto::test

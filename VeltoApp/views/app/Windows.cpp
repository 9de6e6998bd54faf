#include "VeltoApp/views/app/Windows.h"

#include "VeltoApp/app/Application.h"
#include "VeltoApp/app/VeltoApp.h"
#include "VeltoApp/views/app/OneVelto.h"
#include "VeltoApp/views/app/QtExecutor.h"
#include "VeltoApp/views/items/Appearance.h"
#include "VeltoApp/views/items/Symbols.h"
#include "VeltoApp/views/models/AppModel.h"
#include "VeltoQt/DesktopScheme.h"
#include "VeltoQt/DisplayGuard.h"
#include "VeltoShared/control/ControlClient.h"
#include "VeltoShared/core/BackgroundThreads.h"
#include "VeltoShared/core/Clock.h"
#include "VeltoShared/core/Executors.h"

#include <QGuiApplication>
#include <QIcon>
#include <QPalette>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QUrl>
#include <QVariantMap>
#include <QtQml/qqmlextensionplugin.h>

#include <unistd.h>

#include <chrono>
#include <iostream>
#include <optional>
#include <thread>

Q_IMPORT_QML_PLUGIN(VeltoPlugin)

namespace velto {
namespace {

constexpr std::chrono::seconds kTimeToEnd{2};

int fail(const char* trouble) {
    std::cerr << "velto: " << trouble << std::endl;
    return 1;
}

/// What is left to do: the exit status, or none when this process is to be Velto.
std::optional<int> settle(OneVelto& one) {
    switch (one.settle()) {
    case OneVelto::Role::shown:
        return 0;
    case OneVelto::Role::silent:
        return fail("Velto is running and does not answer");
    case OneVelto::Role::first:
    case OneVelto::Role::noBus:
        break;
    }
    if (ControlClient::somebodyListens())
        return fail("Velto is running already, without windows or on another desktop; veltoctl reaches it");
    return std::nullopt;
}

/// A desktop's own theme may be dark where it does not say so.
bool isDark(const DesktopScheme& scheme) {
    const auto palette = QGuiApplication::palette();
    return scheme.prefersDark() ||
           palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

/// A thread that waits for another program, for a password dialog perhaps, must not keep a Velto without
/// windows alive, which would be in the way of the next one.
void endWithin(std::chrono::seconds limit, int status) {
    std::thread([limit, status] {
        Clock::shared().blockFor(limit);
        ::_exit(status);
    }).detach();
}

/// Windows of texts that mostly stand still: without a graphics card's driver they are there sooner and take
/// less than half the memory (`./measure windows`). Who has chosen otherwise by Qt's own means is left to it.
void drawWithoutGraphicsCard() {
    for (const char* choice : {"QT_QUICK_BACKEND", "QMLSCENE_DEVICE", "QSG_RHI_BACKEND"})
        if (qEnvironmentVariableIsSet(choice))
            return;
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

void bringToFront() {
    for (auto* const window : QGuiApplication::topLevelWindows()) {
        if (!window->isVisible() || window->type() == Qt::Popup)
            continue;
        window->setWindowStates(window->windowStates() & ~Qt::WindowMinimized);
        window->raise();
        window->requestActivate();
    }
}

} // namespace

int runWindowed(int argumentCount, char** arguments) {
    // A screen reader may be started after this program.
    ::qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    std::optional<DisplayGuard> guard("velto: cannot open a display (velto --headless needs none): ");
    QGuiApplication qt(argumentCount, arguments);
    guard.reset();
    QGuiApplication::setApplicationName(QStringLiteral("velto"));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.velto.Velto"));
    QGuiApplication::setWindowIcon(applicationIcon());
    drawWithoutGraphicsCard();
    QQuickWindow::setTextRenderType(QQuickWindow::NativeTextRendering);

    OneVelto one;
    if (const auto status = settle(one))
        return *status;

    QtLoop loop;
    MainThread::install(QtExecutor(loop));
    const BackgroundThreads background;
    const VeltoApp app;
    AppModel model(app);
    applicationDidFinishLaunching();

    const DesktopScheme scheme;
    QQmlApplicationEngine engine;
    engine.setInitialProperties({{"app", QVariant::fromValue(&model)}});
    engine.load(QUrl(QStringLiteral("qrc:/Velto/MainView.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;
    auto& appearance = Appearance::of(engine);
    const auto follow = [&] { appearance.setDark(isDark(scheme)); };
    QObject::connect(&scheme, &DesktopScheme::changed, &appearance, follow);
    follow();
    QObject::connect(&one, &OneVelto::wanted, &qt, bringToFront);
    const int status = QGuiApplication::exec();
    endWithin(kTimeToEnd, status);
    return status;
}

} // namespace velto

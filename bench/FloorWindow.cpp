// velto-floor-window: the least that a Qt Quick window with a text in it takes, drawn as Velto's are.
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QQmlApplicationEngine engine;
    engine.loadData(
        "import QtQuick\n"
        "import QtQuick.Controls.Basic\n"
        "ApplicationWindow { visible: true; width: 920; height: 640; Text { text: \"Velto\" } }\n");
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}

#include "VeltoApp/views/app/Windows.h"

#include "VeltoApp/app/Application.h"
#include "VeltoApp/app/VeltoApp.h"
#include "VeltoApp/views/app/QtExecutor.h"
#include "VeltoApp/views/models/AppModel.h"
#include "VeltoShared/core/BackgroundThreads.h"
#include "VeltoShared/core/Executors.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QUrl>
#include <QVariantMap>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(VeltoPlugin)

namespace velto {

int runWindowed(int argumentCount, char** arguments) {
    QGuiApplication qt(argumentCount, arguments);
    QtLoop loop;
    MainThread::install(QtExecutor(loop));
    const BackgroundThreads background;
    const VeltoApp app;
    AppModel model(app);
    applicationDidFinishLaunching();
    QQmlApplicationEngine engine;
    engine.setInitialProperties({{"app", QVariant::fromValue(&model)}});
    engine.load(QUrl(QStringLiteral("qrc:/Velto/MainView.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;
    return QGuiApplication::exec();
}

} // namespace velto

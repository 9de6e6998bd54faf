// The program that the windows' tests are in: one Qt application, windows that nobody sees.
#include "tests/views/WindowBench.h"

#include <QGuiApplication>

#include <gtest/gtest.h>

namespace {

/// A view that complains of itself is a failure; what this platform cannot do to windows is none.
void judge(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& message) {
    if (message.contains(QStringLiteral("qrc:/Velto/")))
        ADD_FAILURE() << message.toStdString();
}

} // namespace

int main(int argc, char** argv) {
    velto::test::WindowBench::prepareQt();
    ::testing::InitGoogleTest(&argc, argv);
    ::qInstallMessageHandler(judge);
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}

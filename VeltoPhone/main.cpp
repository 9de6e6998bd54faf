// velto-phone: the desktop's phone app.
#include "VeltoPhone/app/PhoneProgram.h"
#include "VeltoPhone/app/StopSignals.h"
#include "VeltoPhone/line/ConfiguredLine.h"
#include "VeltoPhone/model/PhoneNumber.h"
#include "VeltoPhone/views/DesktopColours.h"
#include "VeltoPhone/views/Look.h"
#include "VeltoQt/DisplayGuard.h"

#include <CLI/CLI.hpp>

#include <QApplication>
#include <QStandardPaths>

#include <iostream>

namespace velto::phone {
namespace {

void complain(const std::string& trouble) {
    std::cerr << "velto-phone: " << trouble << std::endl;
}

void prepareEnvironment() {
    // Others drive the phone over the accessibility bus, and may come after it has started.
    ::qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    // Where both are to be had: a Wayland client may not say that its banner belongs into the corner. The
    // second is for a DISPLAY that is set and leads nowhere.
    if (!::qEnvironmentVariableIsSet("QT_QPA_PLATFORM") && ::qEnvironmentVariableIsSet("DISPLAY"))
        ::qputenv("QT_QPA_PLATFORM", "xcb;wayland");
}

/// What is left to do: the exit status, or none when this process is to be the phone.
std::optional<int> settle(SingleInstance& instance, const Wish& wish, int argc, char** argv) {
    const QCoreApplication loop(argc, argv);
    switch (instance.settle(wish)) {
    case SingleInstance::Role::first:
        return std::nullopt;
    case SingleInstance::Role::handedOver:
        return 0;
    case SingleInstance::Role::failed:
        break;
    }
    complain(instance.error().toStdString());
    return 1;
}

int run(SingleInstance& instance, StopSignals& signals, const Wish& wish, int argc, char** argv) {
    std::optional<DisplayGuard> guard("velto-phone: cannot open a display: ");
    QApplication application(argc, argv);
    guard.reset();
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setApplicationName(QStringLiteral("velto-phone"));
    QApplication::setDesktopFileName(QStringLiteral("org.velto.VeltoPhone"));
    QApplication::setWindowIcon(phoneIcon());
    QApplication::setQuitOnLastWindowClosed(false);

    const DesktopColours colours;

    auto line = configuredLine();
    if (!line)
        complain("no phone line: " + line.error().description);
    PhoneProgram program(line ? std::move(*line) : nullptr);
    QObject::connect(&instance, &SingleInstance::wished, &program, &PhoneProgram::grant);
    QObject::connect(&program, &PhoneProgram::ending, &instance, &SingleInstance::close);
    if (!instance.listen()) {
        complain(instance.error().toStdString());
        return 1;
    }
    signals.watch([&] { program.stop(); });
    program.grant(wish);
    return QApplication::exec();
}

} // namespace
} // namespace velto::phone

int main(int argc, char** argv) {
    using namespace velto::phone;
    CLI::App commandLine("The desktop's phone: offers a number, places the call and ends it", "velto-phone");
    std::string number;
    const auto* const given =
        commandLine.add_option("number", number, "NUMBER, tel:NUMBER or tel-phoneapp:NUMBER");
    commandLine.set_version_flag("--version", "velto-phone " VELTO_VERSION);
    try {
        commandLine.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return commandLine.exit(error) == 0 ? 0 : 2;
    }
    Wish wish;
    if (given->count() > 0) {
        wish = QString::fromStdString(number);
        if (const auto checked = phoneNumber(number); !checked)
            complain(checked.error().description);
    }

    StopSignals signals;
    prepareEnvironment();
    SingleInstance instance(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation));
    // Qt reads its own options, of which there are none here.
    int count = 1;
    if (const auto status = settle(instance, wish, count, argv))
        return *status;
    return run(instance, signals, wish, count, argv);
}

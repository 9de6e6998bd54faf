// velto-phone-shots: pictures of the phone's windows in every state, for the documentation.
#include "VeltoPhone/views/Banner.h"
#include "VeltoPhone/views/Look.h"
#include "VeltoPhone/views/MainWindow.h"

#include <QApplication>
#include <QDir>
#include <QStyle>

#include <iostream>
#include <memory>

namespace velto::phone {
namespace {

const QString kNumber = QStringLiteral("+15550126");

/// Does what it is told, on the spot.
class ToldLine : public Line {
  public:
    void dial(const std::string& /*number*/, LineEvents events) override { call = std::move(events); }
    void hangUp() override {}
    void sendTones(const std::string& /*digits*/) override {}

    LineEvents call;
};

/// Moves only when told.
class PictureClock : public Clock {
  public:
    WallTime now() const override { return {}; }
    SteadyTime steadyNow() const override { return SteadyTime(elapsed); }
    asio::awaitable<void> sleep(Duration /*duration*/) override { co_return; }
    void blockFor(Duration /*duration*/) override {}
    std::unique_ptr<Timer> repeat(Duration /*interval*/, std::function<void()> /*fire*/) override {
        return nullptr;
    }

    Duration elapsed{};
};

class Photographer {
  public:
    Photographer(QString folder, QString theme, PictureClock& clock)
        : folder_(std::move(folder)), theme_(std::move(theme)), clock_(clock) {}

    bool takeAll() {
        withLine();
        withoutLine();
        return allSaved_;
    }

  private:
    void withLine() {
        auto owned = std::make_unique<ToldLine>();
        auto& line = *owned;
        Phone phone(std::move(owned));
        Banner banner(phone);
        MainWindow window(phone);
        const auto then = [](const auto& event, auto... arguments) {
            event(arguments...);
            QCoreApplication::processEvents();
        };
        window.present();
        take(window, "window-idle");
        phone.open(kNumber);
        take(banner, "offered");
        phone.call();
        take(banner, "calling");
        then(line.call.ringing);
        take(banner, "ringing");
        then(line.call.answered);
        clock_.elapsed += std::chrono::seconds(67);
        phone.tick();
        for (const char key : {'4', '2', '#'})
            phone.sendTone(QLatin1Char(key));
        take(banner, "active");
        take(window, "window-in-call");
        phone.open(QStringLiteral("5551234"));
        take(banner, "notice");
        then(line.call.ended, "callee hung up");
        take(banner, "ended");
        phone.open(QStringLiteral("tel-phoneapp:call%20me%20maybe"));
        take(banner, "refused");
    }

    void withoutLine() {
        Phone phone(nullptr);
        Banner banner(phone);
        phone.open(kNumber);
        take(banner, "no-line");
    }

    void take(QWidget& widget, const char* name) {
        QCoreApplication::processEvents();
        const auto picture = widget.grab();
        const auto file = folder_ + '/' + QLatin1String(name) + '-' + theme_ + QStringLiteral(".png");
        if (!picture.save(file)) {
            std::cerr << "velto-phone-shots: cannot write " << file.toStdString() << '\n';
            allSaved_ = false;
        }
    }

    QString folder_;
    QString theme_;
    PictureClock& clock_;
    bool allSaved_ = true;
};

} // namespace
} // namespace velto::phone

int main(int argc, char** argv) {
    using namespace velto::phone;
    ::qputenv("QT_QPA_PLATFORM", "offscreen");
    ::qputenv("QT_SCALE_FACTOR", "2");
    // What this platform cannot do to windows does not matter to pictures of them.
    ::qputenv("QT_LOGGING_RULES", "default.warning=false");
    QApplication application(argc, argv);
    if (argc != 2) {
        std::cerr << "usage: velto-phone-shots FOLDER\n";
        return 2;
    }
    QApplication::setStyle(QStringLiteral("Fusion"));
    PictureClock clock;
    velto::Clock::install(&clock);
    const auto folder = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(folder);
    bool saved = Photographer(folder, QStringLiteral("light"), clock).takeAll();
    QApplication::setPalette(darkPalette());
    saved = Photographer(folder, QStringLiteral("dark"), clock).takeAll() && saved;
    return saved ? 0 : 1;
}

#include "VeltoApp/views/items/WaveformItem.h"

#include "VeltoShared/audio/Waveform.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/Executors.h"

#include <QPainter>
#include <QPointer>

#include <algorithm>
#include <cmath>
#include <optional>

namespace velto {
namespace {

/// At least as many as there are bars in the widest place.
constexpr std::size_t kColumns = 600;
constexpr double kBar = 2;   // px
constexpr double kPitch = 3; // px from one bar to the next
constexpr double kLoudest = 32768;

} // namespace

struct WaveformItem::Loading {
    static asio::awaitable<std::optional<Waveform>> read(std::filesystem::path path, std::stop_token stop) {
        co_return Waveform::read(path, kColumns, stop);
    }
    static asio::awaitable<void> run(QPointer<WaveformItem> item, std::filesystem::path path,
                                     std::stop_token stop) {
        auto form = co_await Blocking::run(read(std::move(path), stop));
        if (!stop.stop_requested() && item && form)
            item->show(form->seconds, std::move(form->peaks));
    }
};

WaveformItem::WaveformItem(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
}

WaveformItem::~WaveformItem() {
    reading_.request_stop();
}

void WaveformItem::setFile(const QString& file) {
    if (file == file_)
        return;
    file_ = file;
    reading_.request_stop();
    reading_ = std::stop_source();
    show(0, {});
    if (!file_.isEmpty())
        MainThread::spawn(
            Loading::run(this, AppPaths::recordings() / file_.toStdString(), reading_.get_token()));
    Q_EMIT fileChanged();
}

void WaveformItem::show(double seconds, std::vector<std::uint16_t> peaks) {
    peaks_ = std::move(peaks);
    update();
    if (seconds == seconds_)
        return;
    seconds_ = seconds;
    Q_EMIT secondsChanged();
}

/// Painted again only where a bar changes its colour: it is followed ten times a second.
void WaveformItem::setPlayed(double seconds) {
    if (seconds == played_)
        return;
    const int before = playedBars();
    played_ = seconds;
    if (playedBars() != before)
        update();
    Q_EMIT playedChanged();
}

void WaveformItem::setColor(const QColor& color) {
    if (color == color_)
        return;
    color_ = color;
    update();
    Q_EMIT colorChanged();
}

void WaveformItem::setPlayedColor(const QColor& color) {
    if (color == playedColor_)
        return;
    playedColor_ = color;
    update();
    Q_EMIT colorChanged();
}

int WaveformItem::bars() const {
    return std::max(1, static_cast<int>((width() + kPitch - kBar) / kPitch));
}

int WaveformItem::playedBars() const {
    return seconds_ > 0 ? static_cast<int>(std::lround(bars() * std::clamp(played_ / seconds_, 0.0, 1.0)))
                        : 0;
}

void WaveformItem::paint(QPainter* painter) {
    painter->setPen(Qt::NoPen);
    const int count = bars();
    const int played = playedBars();
    const auto columns = static_cast<int>(peaks_.size());
    for (int bar = 0; bar < count; ++bar) {
        int peak = 0;
        const int first = bar * columns / count;
        for (int column = first;
             column < std::clamp((bar + 1) * columns / count, std::min(first + 1, columns), columns);
             ++column)
            peak = std::max<int>(peak, peaks_[static_cast<std::size_t>(column)]);
        // As loud as it sounds, rather than as large as the number is.
        const double tall = std::max(kBar, std::round(height() * std::sqrt(peak / kLoudest) / 2) * 2);
        painter->setBrush(bar < played ? playedColor_ : color_);
        painter->drawRoundedRect(QRectF(bar * kPitch, (height() - tall) / 2, kBar, tall), kBar / 2, kBar / 2);
    }
}

} // namespace velto

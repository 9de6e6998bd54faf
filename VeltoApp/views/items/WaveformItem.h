// The outline of a recording, painted as bars.
#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <cstdint>
#include <stop_token>
#include <vector>

namespace velto {

/// Reads its file off the main thread, anew for each file, and keeps what it shows only. One that cannot be
/// played is a flat line.
class WaveformItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// A file's name in the folder of recordings; empty for none.
    Q_PROPERTY(QString file READ file WRITE setFile NOTIFY fileChanged)
    /// Length of the recording, s; 0 until it is known, and when it cannot be played.
    Q_PROPERTY(double seconds READ seconds NOTIFY secondsChanged)
    /// Up to here it is painted in the other colour, s.
    Q_PROPERTY(double played READ played WRITE setPlayed NOTIFY playedChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
    Q_PROPERTY(QColor playedColor READ playedColor WRITE setPlayedColor NOTIFY colorChanged)

  public:
    explicit WaveformItem(QQuickItem* parent = nullptr);
    ~WaveformItem() override;

    const QString& file() const { return file_; }
    void setFile(const QString& file);
    double seconds() const { return seconds_; }
    double played() const { return played_; }
    void setPlayed(double seconds);
    const QColor& color() const { return color_; }
    void setColor(const QColor& color);
    const QColor& playedColor() const { return playedColor_; }
    void setPlayedColor(const QColor& color);

    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void fileChanged();
    void secondsChanged();
    void playedChanged();
    void colorChanged();

  private:
    struct Loading;
    void show(double seconds, std::vector<std::uint16_t> peaks);
    int bars() const;
    int playedBars() const;

    QString file_;
    double seconds_ = 0;
    double played_ = 0;
    QColor color_ = Qt::gray;
    QColor playedColor_ = Qt::black;
    std::vector<std::uint16_t> peaks_;
    std::stop_source reading_;
};

} // namespace velto

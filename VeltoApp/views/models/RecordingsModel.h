// The recordings on disk as the windows list them, and what is recorded or played by hand.
#pragma once

#include "VeltoApp/state/RecordingState.h"
#include "VeltoApp/views/models/Mirror.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace velto {

/// Main thread.
class RecordingsModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("given by the application")
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(bool recording READ recording NOTIFY recordingChanged)
    /// The file that is being played; empty when none is.
    Q_PROPERTY(QString playing READ playing NOTIFY playingChanged)
    /// Of what is being played, s.
    Q_PROPERTY(double position READ position NOTIFY playingChanged)
    /// The file that was to be played and could not be; `status` says so.
    Q_PROPERTY(QString unplayable READ unplayable NOTIFY unplayableChanged)
    Q_PROPERTY(QString status READ status NOTIFY statusChanged)

  public:
    enum Role { NameRole = Qt::UserRole, SizeRole };

    explicit RecordingsModel(std::shared_ptr<RecordingState> recordings, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    int count() const { return static_cast<int>(files_.size()); }
    bool recording() const { return recording_(); }
    QString playing() const { return playing_() ? shown(playing_()->name) : QString(); }
    double position() const { return playing_() ? playing_()->position : 0; }
    QString unplayable() const { return shown(unplayable_()); }
    QString status() const { return shown(status_()); }

    Q_INVOKABLE void refresh();
    Q_INVOKABLE void record();
    Q_INVOKABLE void stop();
    /// On a device of this name; on the default output when that is blank. From a place in it, s.
    Q_INVOKABLE void play(const QString& name, const QString& device, double from = 0);
    Q_INVOKABLE void stopPlaying();
    /// The name of a file in the folder of this absolute path; empty when it is elsewhere.
    Q_INVOKABLE QString nameOf(const QString& path) const;
    /// A file's name in the folder, or its absolute path.
    Q_INVOKABLE void reveal(const QString& file);

  Q_SIGNALS:
    void countChanged();
    void recordingChanged();
    void playingChanged();
    void unplayableChanged();
    void statusChanged();

  private:
    using Files = std::vector<RecordingState::File>;
    void show(const Files& files);

    std::shared_ptr<RecordingState> recordings_;
    Files files_;
    Subscription filesChange_;
    Mirror<bool> recording_;
    Mirror<std::optional<RecordingState::Playing>> playing_;
    Mirror<std::string> unplayable_;
    Mirror<std::string> status_;
};

} // namespace velto

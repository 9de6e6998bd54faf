// The finished calls, newest first, as the windows list them.
#pragma once

#include "VeltoApp/views/models/OnceATurn.h"
#include "VeltoShared/core/Published.h"

#include <QAbstractListModel>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <cstddef>
#include <limits>
#include <vector>

namespace velto {

class CallHistoryStore;
struct CallRecord;
struct UUID;

/// Main thread. Follows the store, one update in a turn of the event loop, and signals the rows that came and
/// went. Rows are read from the store when they are shown; only their ids are kept.
class HistoryModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("given by the application")
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    /// After how many ms the text of `ago` of the newest call has changed; 0 when that takes a day or more.
    Q_PROPERTY(int agoLifetime READ agoLifetime NOTIFY agoLifetimeChanged)

  public:
    enum Role {
        CallId = Qt::UserRole, ///< text, for the operations below
        Name,                  ///< the number, or "Unknown"
        Number,                ///< may be empty
        Started,               ///< date and time in the user's language and time zone
        Ago,                   ///< "5 minutes ago"
        DurationText,          ///< minutes and seconds: "62:05"
        Transcript,            ///< lines, separated by line feeds
        HasRecording,
        RecordingPath, ///< absolute; empty: none
    };
    Q_ENUM(Role)

    /// Lists the newest `limit` calls of `store`, which must outlive it.
    explicit HistoryModel(CallHistoryStore& store,
                          std::size_t limit = std::numeric_limits<std::size_t>::max(),
                          QObject* parent = nullptr);
    ~HistoryModel() override;

    int count() const;
    int agoLifetime() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Empties the history, beyond the limit too.
    Q_INVOKABLE void clear();
    Q_INVOKABLE void remove(const QString& callId);
    /// The texts of `ago` anew.
    Q_INVOKABLE void refreshAgo();

  Q_SIGNALS:
    void countChanged();
    void agoLifetimeChanged();

  private:
    void update();
    const CallRecord* record(int row) const;

    CallHistoryStore& store_;
    std::size_t limit_;
    std::vector<UUID> ids_;
    OnceATurn look_;
    Subscription subscription_;
};

} // namespace velto

// The lines of a conversation, each with its side.
#pragma once

#include <QAbstractListModel>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <string>
#include <vector>

namespace velto {

/// Main thread. A view makes one of a stored text; the session's own follows the call.
class TranscriptModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    /// Lines separated by line feeds.
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
    Q_PROPERTY(int count READ count NOTIFY countChanged)

  public:
    enum Role {
        Speaker = Qt::UserRole, ///< "Caller", "Agent"; empty: the line goes on or is something else
        Words,
        FromAgent,
    };
    Q_ENUM(Role)

    explicit TranscriptModel(QObject* parent = nullptr);

    int count() const { return static_cast<int>(lines_.size()); }
    QString text() const;
    void setText(const QString& text);
    /// Signals only the rows that are other than before.
    void setLines(std::vector<std::string> lines);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

  Q_SIGNALS:
    void textChanged();
    void countChanged();

  private:
    std::vector<std::string> lines_;
};

} // namespace velto

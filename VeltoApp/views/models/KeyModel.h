// One provider's API key as the windows show it: whether there is one, whether it is good.
#pragma once

#include "VeltoApp/state/AgentState.h"
#include "VeltoApp/views/models/Mirror.h"
#include "VeltoShared/core/Executors.h"

#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

#include <memory>
#include <string>

namespace velto {

/// Main thread. The key itself is never shown, and kept only until the keyring has it.
class KeyModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("given by the application")
    Q_PROPERTY(QString name READ name CONSTANT)
    Q_PROPERTY(bool present READ present NOTIFY changed)
    Q_PROPERTY(bool valid READ valid NOTIFY changed)
    /// "valid" or "not validated"; empty without a key.
    Q_PROPERTY(QString verdict READ verdict NOTIFY changed)
    /// A key is on its way to the keyring, or out of it.
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged)
    /// Why the key that was saved last is not in the keyring.
    Q_PROPERTY(QString problem READ problem NOTIFY busyChanged)

  public:
    KeyModel(std::shared_ptr<AgentState> agent, VoiceProvider provider, QObject* parent = nullptr);

    QString name() const;
    bool present() const { return present_(); }
    bool valid() const { return valid_(); }
    QString verdict() const;
    bool busy() const { return busy_; }
    QString problem() const { return problem_; }

    /// Files the key without the blanks around it, unless nothing is left, and has it validated.
    Q_INVOKABLE void save(const QString& key);
    Q_INVOKABLE void remove();

  Q_SIGNALS:
    void changed();
    void busyChanged();

  private:
    static asio::awaitable<void> file(QPointer<KeyModel> self, std::weak_ptr<AgentState> weak,
                                      std::string key, std::string account);
    void setBusy(bool busy, const QString& problem = {});

    std::shared_ptr<AgentState> agent_;
    VoiceProvider provider_;
    Mirror<bool> present_;
    Mirror<bool> valid_;
    bool busy_ = false;
    QString problem_;
};

} // namespace velto

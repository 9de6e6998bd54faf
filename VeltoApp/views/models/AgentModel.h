// The agent's goal and keys as the windows show them.
#pragma once

#include "VeltoApp/state/AgentState.h"
#include "VeltoApp/views/models/Mirror.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace velto {

/// Main thread. Keys are read and validated off it.
class AgentModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("given by the application")
    /// Of the next call.
    Q_PROPERTY(QString goal READ goal WRITE setGoal NOTIFY goalChanged)
    Q_PROPERTY(bool apiKeyConfigured READ apiKeyConfigured NOTIFY apiKeyConfiguredChanged)
    Q_PROPERTY(bool hasGeminiKey READ hasGeminiKey NOTIFY hasGeminiKeyChanged)
    Q_PROPERTY(bool hasOpenAIKey READ hasOpenAIKey NOTIFY hasOpenAIKeyChanged)
    Q_PROPERTY(bool geminiValid READ geminiValid NOTIFY geminiValidChanged)
    Q_PROPERTY(bool openaiValid READ openaiValid NOTIFY openaiValidChanged)
    Q_PROPERTY(bool validating READ validating NOTIFY validatingChanged)

  public:
    explicit AgentModel(std::shared_ptr<AgentState> agent, QObject* parent = nullptr);

    QString goal() const { return shown(goal_()); }
    void setGoal(const QString& goal);
    bool apiKeyConfigured() const { return apiKeyConfigured_(); }
    bool hasGeminiKey() const { return hasGeminiKey_(); }
    bool hasOpenAIKey() const { return hasOpenAIKey_(); }
    bool geminiValid() const { return geminiValid_(); }
    bool openaiValid() const { return openaiValid_(); }
    bool validating() const { return validating_(); }

    /// Reads the stored keys again and asks their providers.
    Q_INVOKABLE void refreshKey();

  Q_SIGNALS:
    void goalChanged();
    void apiKeyConfiguredChanged();
    void hasGeminiKeyChanged();
    void hasOpenAIKeyChanged();
    void geminiValidChanged();
    void openaiValidChanged();
    void validatingChanged();

  private:
    std::shared_ptr<AgentState> agent_;
    Mirror<std::string> goal_;
    Mirror<bool> apiKeyConfigured_;
    Mirror<bool> hasGeminiKey_;
    Mirror<bool> hasOpenAIKey_;
    Mirror<bool> geminiValid_;
    Mirror<bool> openaiValid_;
    Mirror<bool> validating_;
};

} // namespace velto

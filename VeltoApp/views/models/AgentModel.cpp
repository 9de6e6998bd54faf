#include "VeltoApp/views/models/AgentModel.h"

namespace velto {

AgentModel::AgentModel(std::shared_ptr<AgentState> agent, QObject* parent)
    : QObject(parent), agent_(std::move(agent)), goal_(agent_->goal, [this] { goalChanged(); }),
      apiKeyConfigured_(agent_->apiKeyConfigured, [this] { apiKeyConfiguredChanged(); }),
      hasGeminiKey_(agent_->hasGeminiKey, [this] { hasGeminiKeyChanged(); }),
      hasOpenAIKey_(agent_->hasOpenAIKey, [this] { hasOpenAIKeyChanged(); }),
      geminiValid_(agent_->geminiValid, [this] { geminiValidChanged(); }),
      openaiValid_(agent_->openaiValid, [this] { openaiValidChanged(); }),
      validating_(agent_->validating, [this] { validatingChanged(); }) {}

void AgentModel::setGoal(const QString& goal) {
    agent_->goal.set(goal.toStdString());
}

void AgentModel::refreshKey() {
    agent_->refreshKey();
}

} // namespace velto

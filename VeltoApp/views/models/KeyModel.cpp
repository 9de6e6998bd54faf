#include "VeltoApp/views/models/KeyModel.h"

#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/core/TextTrim.h"

namespace velto {
namespace {

/// Without a key the stored one is removed.
asio::awaitable<bool> change(std::string key, std::string account) {
    if (!key.empty())
        co_return KeychainStore::set(key, account);
    KeychainStore::remove(account);
    co_return true;
}

} // namespace

KeyModel::KeyModel(std::shared_ptr<AgentState> agent, VoiceProvider provider, QObject* parent)
    : QObject(parent), agent_(std::move(agent)), provider_(provider),
      present_(provider == VoiceProvider::gemini ? agent_->hasGeminiKey : agent_->hasOpenAIKey,
               [this] { changed(); }),
      valid_(provider == VoiceProvider::gemini ? agent_->geminiValid : agent_->openaiValid,
             [this] { changed(); }) {}

QString KeyModel::name() const {
    return provider_ == VoiceProvider::gemini ? QStringLiteral("Gemini") : QStringLiteral("OpenAI");
}

QString KeyModel::verdict() const {
    if (!present())
        return {};
    return valid() ? QStringLiteral("valid") : QStringLiteral("not validated");
}

void KeyModel::save(const QString& key) {
    const auto whole = key.toStdString();
    if (const auto trimmed = trimBlanks(whole); !busy_ && !trimmed.empty()) {
        setBusy(true);
        MainThread::spawn(file(this, agent_, std::string(trimmed), std::string(keyAccount(provider_))));
    }
}

void KeyModel::remove() {
    if (busy_)
        return;
    setBusy(true);
    MainThread::spawn(file(this, agent_, "", std::string(keyAccount(provider_))));
}

asio::awaitable<void> KeyModel::file(QPointer<KeyModel> self, std::weak_ptr<AgentState> weak, std::string key,
                                     std::string account) {
    const bool done = co_await Blocking::run(change(std::move(key), std::move(account)));
    if (self)
        self->setBusy(false, done ? QString() : QStringLiteral("The key could not be stored."));
    if (const auto agent = weak.lock())
        agent->refreshKey();
}

void KeyModel::setBusy(bool busy, const QString& problem) {
    busy_ = busy;
    problem_ = problem;
    busyChanged();
}

} // namespace velto

// The store: loading once, saving after every change, and never overwriting what it could not read.
#include "VeltoApp/history/CallHistoryStore.h"

#include "VeltoApp/history/CallRecordJSON.h"
#include "VeltoApp/history/HistoryFile.h"
#include "VeltoShared/core/AppPaths.h"

namespace velto {
namespace {

constexpr int kNamesTried = 1000;

} // namespace

CallHistoryStore& CallHistoryStore::shared() {
    static CallHistoryStore store(AppPaths::historyFile());
    return store;
}

CallHistoryStore::CallHistoryStore(std::filesystem::path url) : url_(std::move(url)) {
    load();
}

void CallHistoryStore::insertFirst(CallRecord record) {
    records.mutate([&](auto& list) { list.insert(list.begin(), std::move(record)); });
    save();
}

void CallHistoryStore::removeAll() {
    records.set({});
    save();
}

void CallHistoryStore::remove(const UUID& id) {
    records.mutate([&](auto& list) { std::erase_if(list, [&](const auto& one) { return one.id == id; }); });
    save();
}

void CallHistoryStore::save() {
    const auto content = CallRecordJSON::encode(records());
    if (!content)
        return;
    if (unreadable_ && !keepAside())
        return;
    HistoryFile::replace(url_, *content);
}

void CallHistoryStore::load() {
    std::error_code error;
    if (!std::filesystem::exists(url_, error))
        return;
    const auto content = HistoryFile::read(url_);
    auto decoded = content ? CallRecordJSON::decode(*content) : std::nullopt;
    if (decoded)
        records.set(std::move(*decoded));
    else
        unreadable_ = !content || !content->empty();
}

bool CallHistoryStore::keepAside() {
    std::error_code error;
    for (int attempt = 1; attempt < kNamesTried; ++attempt) {
        auto name = url_;
        name += attempt == 1 ? ".unreadable" : ".unreadable-" + std::to_string(attempt);
        if (std::filesystem::exists(std::filesystem::symlink_status(name, error)))
            continue;
        std::filesystem::rename(url_, name, error);
        unreadable_ = static_cast<bool>(error);
        break;
    }
    return !unreadable_;
}

} // namespace velto

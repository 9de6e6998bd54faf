#include "VeltoApp/views/models/HistoryModel.h"

#include "VeltoApp/history/CallHistoryStore.h"
#include "VeltoApp/views/models/Mirror.h"
#include "VeltoApp/views/models/TimeTexts.h"
#include "VeltoShared/core/Clock.h"

#include <algorithm>

namespace velto {

HistoryModel::HistoryModel(CallHistoryStore& store, std::size_t limit, QObject* parent)
    : QAbstractListModel(parent), store_(store), limit_(limit),
      // The store tells before it changes.
      look_([this] { update(); }), subscription_(store.observe([this] { look_.ask(); })) {
    update();
}

HistoryModel::~HistoryModel() = default;

int HistoryModel::count() const {
    return static_cast<int>(ids_.size());
}

void HistoryModel::update() {
    const auto& records = store_.records();
    std::vector<UUID> next(std::min(records.size(), limit_));
    std::transform(records.begin(), records.begin() + static_cast<std::ptrdiff_t>(next.size()), next.begin(),
                   [](const CallRecord& record) { return record.id; });
    if (next == ids_)
        return;
    // What both have in front and at the end stays; between them, the old goes and the new comes.
    const auto front = std::ranges::mismatch(ids_, next);
    const auto [lastOld, lastNew] = std::mismatch(ids_.rbegin(), std::make_reverse_iterator(front.in1),
                                                  next.rbegin(), std::make_reverse_iterator(front.in2));
    const auto first = static_cast<int>(front.in1 - ids_.begin());
    const auto gone = static_cast<int>(lastOld.base() - front.in1);
    const auto come = static_cast<int>(lastNew.base() - front.in2);
    const std::vector<UUID> middle(front.in2, lastNew.base());
    if (gone > 0) {
        beginRemoveRows({}, first, first + gone - 1);
        ids_.erase(ids_.begin() + first, ids_.begin() + first + gone);
        endRemoveRows();
    }
    if (come > 0) {
        beginInsertRows({}, first, first + come - 1);
        ids_.insert(ids_.begin() + first, middle.begin(), middle.end());
        endInsertRows();
    }
    Q_EMIT countChanged();
    refreshAgo();
}

/// Before an update has come, the store may be a change ahead.
const CallRecord* HistoryModel::record(int row) const {
    const auto& records = store_.records();
    const auto index = static_cast<std::size_t>(row);
    if (index < records.size() && records[index].id == ids_[index])
        return &records[index];
    const auto found = std::ranges::find(records, ids_[index], &CallRecord::id);
    return found == records.end() ? nullptr : &*found;
}

int HistoryModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant HistoryModel::data(const QModelIndex& index, int role) const {
    const auto* call = index.isValid() && index.row() < count() ? record(index.row()) : nullptr;
    if (!call)
        return {};
    switch (role) {
    case CallId:
        return shown(call->id.text());
    case Name:
        return call->number.empty() ? QStringLiteral("Unknown") : shown(call->number);
    case Number:
        return shown(call->number);
    case Started:
        return dateTimeText(call->started.timePoint());
    case Ago:
        return agoText(call->started.timePoint(), Clock::shared().now());
    case DurationText:
        return shown(call->durationText());
    case Transcript:
        return shown(call->transcript);
    case HasRecording:
        return call->recordingPath.has_value();
    case RecordingPath:
        return shown(call->recordingPath.value_or(""));
    default:
        return {};
    }
}

QHash<int, QByteArray> HistoryModel::roleNames() const {
    return {{CallId, "callId"},
            {Name, "name"},
            {Number, "number"},
            {Started, "started"},
            {Ago, "ago"},
            {DurationText, "durationText"},
            {Transcript, "transcript"},
            {HasRecording, "hasRecording"},
            {RecordingPath, "recordingPath"}};
}

int HistoryModel::agoLifetime() const {
    const auto* newest = ids_.empty() ? nullptr : record(0);
    if (!newest)
        return 0;
    return static_cast<int>(velto::agoLifetime(Clock::shared().now() - newest->started.timePoint()).count());
}

void HistoryModel::clear() {
    store_.removeAll();
}

void HistoryModel::remove(const QString& callId) {
    if (const auto id = UUID::parse(callId.toStdString()))
        store_.remove(*id);
}

void HistoryModel::refreshAgo() {
    if (!ids_.empty())
        Q_EMIT dataChanged(index(0), index(count() - 1), {Ago});
    Q_EMIT agoLifetimeChanged();
}

} // namespace velto

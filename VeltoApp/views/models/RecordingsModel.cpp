#include "VeltoApp/views/models/RecordingsModel.h"

#include "VeltoApp/views/models/Reveal.h"
#include "VeltoShared/core/AppPaths.h"

namespace velto {

RecordingsModel::RecordingsModel(std::shared_ptr<RecordingState> recordings, QObject* parent)
    : QAbstractListModel(parent), recordings_(std::move(recordings)), files_(recordings_->files()),
      filesChange_(recordings_->files.observe([this](const Files& files) { show(files); })),
      recording_(recordings_->recording, [this] { recordingChanged(); }),
      playing_(recordings_->playing, [this] { playingChanged(); }),
      unplayable_(recordings_->unplayable, [this] { unplayableChanged(); }),
      status_(recordings_->status, [this] { statusChanged(); }) {}

int RecordingsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant RecordingsModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const auto& file = files_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case NameRole:
        return shown(file.name);
    case SizeRole:
        return QString::number(file.size / 1024) + QStringLiteral(" KB");
    default:
        return {};
    }
}

QHash<int, QByteArray> RecordingsModel::roleNames() const {
    return {{NameRole, "name"}, {SizeRole, "size"}};
}

void RecordingsModel::refresh() {
    recordings_->refresh();
}

void RecordingsModel::record() {
    recordings_->start();
}

void RecordingsModel::stop() {
    recordings_->stop();
}

void RecordingsModel::play(const QString& name, const QString& device, double from) {
    recordings_->play(name.toStdString(), device.toStdString(), from);
}

void RecordingsModel::stopPlaying() {
    recordings_->stopPlaying();
}

QString RecordingsModel::nameOf(const QString& path) const {
    const std::filesystem::path file(path.toStdString());
    return file.parent_path() == AppPaths::recordings() ? shown(file.filename().string()) : QString();
}

void RecordingsModel::reveal(const QString& file) {
    velto::reveal(AppPaths::recordings() / file.toStdString());
}

/// A list that is as before keeps its rows, and with them the keyboard's place.
void RecordingsModel::show(const Files& files) {
    if (files == files_)
        return;
    beginResetModel();
    files_ = files;
    endResetModel();
    countChanged();
}

} // namespace velto

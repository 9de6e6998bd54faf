#include "VeltoApp/views/models/TranscriptModel.h"

#include "VeltoApp/views/models/Mirror.h"

#include <algorithm>
#include <string_view>

namespace velto {
namespace {

struct Line {
    std::string_view speaker;
    std::string_view words;
};

Line divided(std::string_view line) {
    for (const std::string_view speaker : {"Caller", "Agent"})
        if (line.starts_with(speaker) && line.substr(speaker.size()).starts_with(": "))
            return {speaker, line.substr(speaker.size() + 2)};
    return {{}, line};
}

} // namespace

TranscriptModel::TranscriptModel(QObject* parent) : QAbstractListModel(parent) {}

QString TranscriptModel::text() const {
    return shown(lines_).join(QLatin1Char('\n'));
}

void TranscriptModel::setText(const QString& text) {
    std::vector<std::string> lines;
    for (const auto& line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        lines.push_back(line.toStdString());
    setLines(std::move(lines));
}

void TranscriptModel::setLines(std::vector<std::string> lines) {
    const auto before = lines_.size();
    const auto common = std::min(before, lines.size());
    const auto differs = std::ranges::mismatch(lines_, lines);
    const auto first = static_cast<std::size_t>(differs.in1 - lines_.begin());
    if (first == before && before == lines.size())
        return;
    const auto row = [](std::size_t index) { return static_cast<int>(index); };
    if (lines.size() < before) {
        beginRemoveRows({}, row(common), row(before) - 1);
        lines_.resize(common);
        endRemoveRows();
    }
    if (first < common) {
        std::swap_ranges(lines_.begin() + row(first), lines_.begin() + row(common),
                         lines.begin() + row(first));
        Q_EMIT dataChanged(index(row(first)), index(row(common) - 1));
    }
    if (lines.size() > before) {
        beginInsertRows({}, row(before), row(lines.size()) - 1);
        lines_.insert(lines_.end(), std::make_move_iterator(lines.begin() + row(before)),
                      std::make_move_iterator(lines.end()));
        endInsertRows();
    }
    if (before != lines_.size())
        Q_EMIT countChanged();
    Q_EMIT textChanged();
}

int TranscriptModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant TranscriptModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= count())
        return {};
    const auto line = divided(lines_[static_cast<std::size_t>(index.row())]);
    switch (role) {
    case Speaker:
        return shown(line.speaker);
    case Words:
        return shown(line.words);
    case FromAgent:
        return line.speaker == "Agent";
    default:
        return {};
    }
}

QHash<int, QByteArray> TranscriptModel::roleNames() const {
    return {{Speaker, "speaker"}, {Words, "words"}, {FromAgent, "fromAgent"}};
}

} // namespace velto

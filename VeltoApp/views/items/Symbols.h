// The drawings of the windows' symbols.
#pragma once

#include <QIcon>
#include <QPainterPath>
#include <QString>

namespace velto {

/// Side of the square on which symbols are drawn.
inline constexpr double kSymbolGrid = 24;

/// The area to be filled; empty for a name without a drawing.
const QPainterPath& symbolPath(const QString& name);

/// Of the program's windows.
QIcon applicationIcon();

} // namespace velto

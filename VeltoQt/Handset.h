// The handset of a telephone, as every window of ours draws it.
#pragma once

#include <QPainterPath>

namespace velto {

/// Lying like a bridge, a bow with an ear piece at either end, on a square of the side 24: one shape, so that
/// it may be translucent.
QPainterPath handset();

} // namespace velto

#include "VeltoQt/Handset.h"

namespace velto {

QPainterPath handset() {
    QPainterPath line(QPointF(4.4, 13));
    line.cubicTo(6.4, 7.6, 17.6, 7.6, 19.6, 13);
    QPainterPathStroker stroker;
    stroker.setWidth(3.4);
    stroker.setCapStyle(Qt::FlatCap);
    stroker.setCurveThreshold(0.02);
    QPainterPath ears;
    ears.addRoundedRect(QRectF(1.6, 11.4, 6.2, 5), 1.7, 1.7);
    ears.addRoundedRect(QRectF(16.2, 11.4, 6.2, 5), 1.7, 1.7);
    return stroker.createStroke(line).united(ears);
}

} // namespace velto

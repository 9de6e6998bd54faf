#include "VeltoApp/views/items/Symbols.h"

#include "VeltoQt/Handset.h"

#include <QHash>
#include <QPainter>
#include <QPixmap>
#include <QTransform>

#include <cmath>
#include <initializer_list>
#include <numbers>

namespace velto {
namespace {

constexpr double kLine = 1.9;
constexpr QPointF kMiddle(kSymbolGrid / 2, kSymbolGrid / 2);

QPainterPath stroked(const QPainterPath& path, double width = kLine) {
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    stroker.setCurveThreshold(0.02);
    return stroker.createStroke(path).simplified();
}

QPainterPath line(std::initializer_list<QPointF> points) {
    QPainterPath path(*points.begin());
    for (const auto& point : points)
        path.lineTo(point);
    return path;
}

QPainterPath shape(std::initializer_list<QPointF> points) {
    auto path = line(points);
    path.closeSubpath();
    return path;
}

QPainterPath disc(QPointF middle, double radius) {
    QPainterPath path;
    path.addEllipse(middle, radius, radius);
    return path;
}

QPainterPath box(const QRectF& rectangle, double radius) {
    QPainterPath path;
    path.addRoundedRect(rectangle, radius, radius);
    return path;
}

/// A closed curve around the middle; `radius` of an angle in radians.
template <class Radius>
QPainterPath around(Radius radius) {
    constexpr int kPoints = 288;
    QPainterPath path;
    for (int i = 0; i < kPoints; ++i) {
        const double angle = 2 * std::numbers::pi * i / kPoints;
        const QPointF point = kMiddle + radius(angle) * QPointF(std::cos(angle), std::sin(angle));
        i == 0 ? path.moveTo(point) : path.lineTo(point);
    }
    path.closeSubpath();
    return path;
}

QPainterPath turned(const QPainterPath& path, double degrees) {
    return QTransform()
        .translate(kMiddle.x(), kMiddle.y())
        .rotate(degrees)
        .translate(-kMiddle.x(), -kMiddle.y())
        .map(path);
}

QPainterPath tick() {
    return stroked(line({{7.6, 12.4}, {10.8, 15.6}, {16.6, 8.8}}), 2.1);
}

QPainterPath exclamation(double top, double bottom) {
    return stroked(line({{12, top}, {12, bottom - 3.6}}), 2.1).united(disc({12, bottom}, 1.3));
}

QPainterPath phoneArrow() {
    const auto phone = QTransform().translate(-1.2, 2.4).map(turned(handset(), -135));
    return phone.united(stroked(line({{14.6, 9.4}, {21.2, 2.8}})))
        .united(stroked(line({{15.8, 2.8}, {21.2, 2.8}, {21.2, 8.2}})));
}

QPainterPath gear() {
    constexpr int kTeeth = 8;
    const auto rim = around([](double angle) {
        // A rounded square wave.
        return 8.6 + 1.1 * std::tanh(3 * std::cos(kTeeth * angle));
    });
    return stroked(rim, 1.7).united(stroked(disc(kMiddle, 3.2), 1.7));
}

QPainterPath seal() {
    return around([](double angle) { return 9.9 + 0.75 * std::cos(8 * angle); }).subtracted(tick());
}

QPainterPath warningTriangle() {
    const auto area = shape({{12, 4.2}, {21.2, 19.8}, {2.8, 19.8}});
    return area.united(stroked(area, 3)).subtracted(exclamation(9.2, 17.9));
}

QPainterPath checklist() {
    QPainterPath list;
    for (const double y : {6.5, 17.5})
        list = list.united(stroked(line({{2.8, y}, {4.8, y + 2}, {8.4, y - 2.4}})))
                   .united(stroked(line({{12.4, y}, {21, y}})));
    return list;
}

QPainterPath tools() {
    const auto jaw = disc({12, 4.4}, 4).subtracted(box({10.3, -1, 3.4, 5.6}, 0.6));
    const auto wrench = jaw.united(box({10.3, 6, 3.4, 16}, 1.7)).subtracted(disc({12, 19.8}, 0.8));
    const auto screwdriver = box({11.2, 1.4, 1.6, 10.4}, 0.5).united(box({9.9, 11.6, 4.2, 10.6}, 1.8));
    const auto front = turned(wrench, 45);
    const auto gap = stroked(front, 1.6).united(front);
    return turned(screwdriver, -45).subtracted(gap).united(front);
}

QPainterPath calendar() {
    auto page = stroked(box({3.6, 5, 16.8, 15.6}, 2.6)).united(stroked(line({{4, 10}, {20, 10}})));
    for (const double x : {8.0, 16.0})
        page = page.united(stroked(line({{x, 2.8}, {x, 6.6}})));
    for (const double x : {8.2, 12.0, 15.8})
        page = page.united(disc({x, 14.8}, 1.25));
    return page;
}

QPainterPath clock() {
    return stroked(disc(kMiddle, 9.2)).united(stroked(line({{12, 6.8}, {12, 12}, {15.6, 14.2}})));
}

QPainterPath waveform() {
    QPainterPath bars;
    constexpr std::array kHalves{1.6, 4.6, 8.6, 3.2, 6.2, 1.6};
    double x = 2.4;
    for (const double half : kHalves) {
        bars.addPath(stroked(line({{x, 12 - half}, {x, 12 + half}})));
        x += 3.84;
    }
    return bars;
}

QPainterPath bin() {
    return stroked(line({{4, 6.4}, {20, 6.4}}))
        .united(stroked(line({{9, 6}, {9.4, 3.4}, {14.6, 3.4}, {15, 6}})))
        .united(stroked(line({{5.8, 6.6}, {6.8, 20.8}, {17.2, 20.8}, {18.2, 6.6}})))
        .united(stroked(line({{10, 10.4}, {10.3, 17}})))
        .united(stroked(line({{14, 10.4}, {13.7, 17}})));
}

QPainterPath folder() {
    return stroked(shape({{3, 5}, {9, 5}, {11.4, 7.6}, {21, 7.6}, {21, 19.4}, {3, 19.4}}));
}

QPainterPath again() {
    QPainterPath arc;
    const QRectF around(4, 4.4, 16, 16);
    arc.arcMoveTo(around, 42);
    arc.arcTo(around, 42, 300);
    return stroked(arc).united(stroked(line({{18.2, 2.2}, {18.2, 7}, {13.4, 7}})));
}

QHash<QString, QPainterPath> drawings() {
    const auto whole = disc(kMiddle, 10.2);
    return {
        {QStringLiteral("arrow.clockwise"), again()},
        {QStringLiteral("arrow.down"),
         stroked(line({{12, 4}, {12, 20}})).united(stroked(line({{5.6, 13.6}, {12, 20}, {18.4, 13.6}})))},
        {QStringLiteral("calendar"), calendar()},
        {QStringLiteral("checklist"), checklist()},
        {QStringLiteral("checkmark"), stroked(line({{4.6, 12.8}, {9.8, 18}, {19.4, 6.6}}), 2.4)},
        {QStringLiteral("checkmark.circle.fill"), whole.subtracted(tick())},
        {QStringLiteral("checkmark.seal.fill"), seal()},
        {QStringLiteral("chevron.down"), stroked(line({{5.6, 9}, {12, 15.4}, {18.4, 9}}), 2.2)},
        {QStringLiteral("chevron.right"), stroked(line({{9, 5.6}, {15.4, 12}, {9, 18.4}}), 2.2)},
        {QStringLiteral("circle"), stroked(disc(kMiddle, 9.2))},
        {QStringLiteral("clock"), clock()},
        {QStringLiteral("exclamationmark.circle.fill"), whole.subtracted(exclamation(6.6, 16.9))},
        {QStringLiteral("exclamationmark.triangle.fill"), warningTriangle()},
        {QStringLiteral("folder"), folder()},
        {QStringLiteral("gearshape"), gear()},
        {QStringLiteral("phone.arrow.up.right"), phoneArrow()},
        {QStringLiteral("play.fill"),
         stroked(shape({{7, 4.6}, {19, 12}, {7, 19.4}}), 2).united(shape({{7, 4.6}, {19, 12}, {7, 19.4}}))},
        {QStringLiteral("stop.fill"), box({5, 5, 14, 14}, 2.6)},
        {QStringLiteral("trash"), bin()},
        {QStringLiteral("waveform"), waveform()},
        {QStringLiteral("wrench.and.screwdriver"), tools()},
        {QStringLiteral("xmark"), stroked(line({{5.4, 5.4}, {18.6, 18.6}}), 2.2)
                                      .united(stroked(line({{18.6, 5.4}, {5.4, 18.6}}), 2.2))},
    };
}

} // namespace

const QPainterPath& symbolPath(const QString& name) {
    static const auto kDrawings = drawings();
    static const QPainterPath kNothing;
    const auto found = kDrawings.constFind(name);
    return found == kDrawings.cend() ? kNothing : *found;
}

QIcon applicationIcon() {
    constexpr int kSide = 128;
    constexpr double kMargin = 8;
    constexpr double kSymbol = 80;
    QPixmap picture(kSide, kSide);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(box({kMargin, kMargin, kSide - 2 * kMargin, kSide - 2 * kMargin}, 28),
                     QColor(0x1d, 0x5b, 0xd0));
    painter.translate((kSide - kSymbol) / 2, (kSide - kSymbol) / 2);
    painter.scale(kSymbol / kSymbolGrid, kSymbol / kSymbolGrid);
    painter.fillPath(symbolPath(QStringLiteral("waveform")), Qt::white);
    return picture;
}

} // namespace velto

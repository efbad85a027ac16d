#include "ui/look/Placement.h"

#include <QScreen>
#include <QWidget>

void centreOver(QWidget& window, const QWidget* over) {
    const QRect screen = (over ? over : &window)->screen()->availableGeometry();
    QRect place = window.rect();
    place.moveCenter((over ? over->frameGeometry() : screen).center());
    place.moveLeft(qMax(screen.left(), qMin(place.left(), screen.right() - place.width())));
    place.moveTop(qMax(screen.top(), qMin(place.top(), screen.bottom() - place.height())));
    window.move(place.topLeft());
}

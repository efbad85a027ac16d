#include "ui/look/Motion.h"

#include "support/desktop/Desktop.h"

#include <QStyle>
#include <QWidget>

namespace motion {

int duration(const QWidget& widget) {
    constexpr int kMaximum = 180;
    if (sharedDesktop().prefersReducedMotion()) return 0;
    return qMin(kMaximum, widget.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &widget));
}

}  // namespace motion

#include "ui/widgets/ElidedComboBox.h"

#include <QStyleOptionComboBox>
#include <QStylePainter>

QRect ElidedComboBox::textRect() const {
    QStyleOptionComboBox option;
    initStyleOption(&option);
    return style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
}

void ElidedComboBox::paintEvent(QPaintEvent*) {
    constexpr int kStylesMargin = 2;
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    option.currentText =
        fontMetrics().elidedText(option.currentText, Qt::ElideRight, textRect().width() - kStylesMargin);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

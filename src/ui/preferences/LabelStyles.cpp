#include "ui/preferences/LabelStyles.h"

#include "ui/look/Colors.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QStyle>

namespace {

constexpr int kGroupGap = 16;
constexpr int kSettingGap = 8;

/// The first heading of a page has only the page's margin above it; each further one begins a new group.
bool isFirstOfPage(QLabel& label) {
    const auto* grid = qobject_cast<QGridLayout*>(label.parentWidget()->layout());
    return grid && grid->contentsMargins().top() > 0 && grid->itemAtPosition(0, 0)->widget() == &label;
}

void styleHeading(QLabel& label) {
    QFont font;
    font.setBold(true);
    label.setFont(font);
    label.setContentsMargins(0, isFirstOfPage(label) ? 0 : kGroupGap, 0, kSettingGap);
}

/// A small font in the secondary colour; below a check box or a radio button aligned with its text. It
/// becomes the accessible description of the control that it explains.
void styleHelp(QLabel& label, const QWidget& root) {
    constexpr qreal kSmall = 0.9;
    QFont font = root.font();
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * kSmall);
    else
        font.setPixelSize(qRound(font.pixelSize() * kSmall));
    label.setFont(font);
    QPalette palette;
    palette.setColor(QPalette::WindowText, colors::secondaryText(root.palette()));
    label.setPalette(palette);

    QString name = label.objectName();
    if (!name.endsWith(u"Help")) return;
    label.setContentsMargins(0, 2, 0, kSettingGap + 2);
    name.chop(4);
    auto* control = root.findChild<QWidget*>(name);
    if (!control) return;
    control->setAccessibleDescription(label.text());
    if (!qobject_cast<QAbstractButton*>(control)) return;
    const QStyle& style = *control->style();
    const bool isCheck = qobject_cast<QCheckBox*>(control) != nullptr;
    label.setIndent(
        style.pixelMetric(isCheck ? QStyle::PM_IndicatorWidth : QStyle::PM_ExclusiveIndicatorWidth, nullptr,
                          control) +
        style.pixelMetric(isCheck ? QStyle::PM_CheckBoxLabelSpacing : QStyle::PM_RadioButtonLabelSpacing,
                          nullptr, control));
}

}  // namespace

void styleLabels(QWidget& root) {
    const QList<QLabel*> labels = root.findChildren<QLabel*>();
    // By default labels follow the direction of their text, which may differ from that of the window.
    const Qt::Alignment leading = (root.isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute;
    for (QLabel* label : labels) {
        label->setAlignment(leading | Qt::AlignVCenter);
        const QString role = label->property("role").toString();
        if (role == u"heading") styleHeading(*label);
        if (role == u"help") styleHelp(*label, root);
    }
}

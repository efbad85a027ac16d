#include "ui/widgets/AudioComboBox.h"

#include "ui/look/Colors.h"
#include "ui/widgets/ToolTip.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QStyledItemDelegate>

namespace {

constexpr int kDescriptionRole = Qt::UserRole;
constexpr int kGap = 8;

/// The description, and the text below it.
class TwoLines : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        const QFontMetrics& metrics = option.fontMetrics;
        const int width = qMax(metrics.horizontalAdvance(index.data().toString()),
                               metrics.horizontalAdvance(index.data(kDescriptionRole).toString()));
        return {width + 2 * kGap, 2 * metrics.height() + kGap};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const bool isSelected = option.state.testFlag(QStyle::State_Selected);
        const QPalette& palette = option.palette;
        painter->save();
        painter->setFont(option.font);
        painter->setLayoutDirection(option.direction);
        painter->fillRect(option.rect, isSelected ? palette.highlight() : palette.base());
        QRect line = option.rect.adjusted(kGap, kGap / 2, -kGap, 0);
        line.setHeight(option.fontMetrics.height());
        const auto draw = [&](const QString& text, const QColor& color) {
            painter->setPen(isSelected ? palette.color(QPalette::HighlightedText) : color);
            painter->drawText(line,
                              static_cast<int>(Qt::AlignVCenter | Qt::AlignLeading) | Qt::TextSingleLine,
                              option.fontMetrics.elidedText(text, Qt::ElideMiddle, line.width()));
            line.translate(0, line.height());
        };
        draw(index.data(kDescriptionRole).toString(), palette.color(QPalette::Text));
        draw(index.data().toString(), colors::secondaryText(palette));
        painter->restore();
    }
};

}  // namespace

AudioComboBox::AudioComboBox(QWidget* parent) : ElidedComboBox(parent) {
    setItemDelegate(new TwoLines(this));
    connect(this, &QComboBox::currentIndexChanged, this, &AudioComboBox::showDescription);
}

void AudioComboBox::setTracks(const QStringList& texts, const QStringList& descriptions) {
    if (m_texts == texts && m_descriptions == descriptions) return;
    m_texts = texts;
    m_descriptions = descriptions;
    clear();
    for (qsizetype i = 0; i < texts.size(); ++i) {
        const auto item = static_cast<int>(i);
        addItem(texts[i], descriptions[i]);
        setItemData(item, QStringList{descriptions[i], texts[i]}.join(", "), Qt::AccessibleTextRole);
        setItemData(item, plainToolTip(descriptions[i]), Qt::ToolTipRole);
    }
    setCurrentIndex(-1);
    showDescription();
}

void AudioComboBox::showDescription() {
    setAccessibleDescription(currentData(kDescriptionRole).toString());
    update();
}

void AudioComboBox::showPopup() {
    constexpr int kWidest = 480;
    view()->setMinimumWidth(qBound(0, view()->sizeHintForColumn(0) + 2 * kGap, kWidest));
    ElidedComboBox::showPopup();
}

void AudioComboBox::paintEvent(QPaintEvent* event) {
    ElidedComboBox::paintEvent(event);
    const QString description = currentData(kDescriptionRole).toString();
    if (description.isEmpty()) return;
    QRect rest = textRect();
    const int used = fontMetrics().horizontalAdvance(currentText()) + kGap;
    rest = QStyle::visualRect(layoutDirection(), rest, rest.adjusted(used, 0, -1, 0));
    // A few letters would say nothing.
    if (rest.width() < fontMetrics().averageCharWidth() * 6) return;
    QPainter painter(this);
    painter.setLayoutDirection(layoutDirection());
    painter.setPen(isEnabled() ? colors::secondaryText(palette())
                               : palette().color(QPalette::Disabled, QPalette::ButtonText));
    painter.drawText(rest, static_cast<int>(Qt::AlignVCenter | Qt::AlignLeading) | Qt::TextSingleLine,
                     fontMetrics().elidedText(description, Qt::ElideRight, rest.width()));
}

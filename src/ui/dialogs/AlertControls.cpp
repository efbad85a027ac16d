#include "ui/dialogs/AlertControls.h"

#include "support/base/Texts.h"
#include "ui/look/Icons.h"

#include <QAbstractItemView>
#include <QButtonGroup>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QFile>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QTextDocument>
#include <QTextLayout>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace {

constexpr QSize kLine(310, 24);
constexpr QSize kText(310, 200);
constexpr QSize kMatrixRow(269, 17);
constexpr int kMatrixHighest = 240;

/// The size in the table, or the control's minimum if the style needs more.
void fix(QWidget* widget, QSize size) {
    widget->setFixedSize(size.expandedTo({0, widget->sizeHint().height()}));
}

/// Creates the document that is used for measuring a text and for showing it.
void prepare(QTextDocument& document, const QString& text) {
    QTextOption option = document.defaultTextOption();
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    // All texts start beside the icon, independent of their language.
    if (QGuiApplication::isRightToLeft()) option.setAlignment(Qt::AlignRight | Qt::AlignAbsolute);
    document.setDefaultTextOption(option);
    document.setDocumentMargin(0);
    document.setPlainText(text);
}

/// The title with line breaks if it is wider than `width`.
QString brokenIntoLines(const QString& title, const QFont& font, int width) {
    QTextLayout layout(title, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    QStringList lines;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        lines.append(title.mid(line.textStart(), line.textLength()).trimmed());
    }
    layout.endLayout();
    return lines.join(u'\n');
}

void setTitle(QAbstractButton* button, const QString& title, int width) {
    button->setText("x");
    const int indicator = button->sizeHint().width() - button->fontMetrics().horizontalAdvance(u'x');
    button->setText(withoutMnemonics(brokenIntoLines(title, button->font(), width - indicator)));
    button->setAccessibleName(title);
}

/// A colour field that opens the colour panel.
class ColorWell : public QToolButton {
public:
    ColorWell(const QColor& color, QWidget* parent) : QToolButton(parent) {
        setFocusPolicy(Qt::StrongFocus);
        setColor(color.isValid() ? color : QColor(Qt::black));
        connect(this, &QToolButton::clicked, this, &ColorWell::choose);
    }

    QString value() const { return m_color.name(m_color.alpha() == 255 ? QColor::HexRgb : QColor::HexArgb); }

protected:
    void paintEvent(QPaintEvent* event) override {
        QToolButton::paintEvent(event);
        const QRect field = rect().adjusted(4, 4, -4, -4);
        QPainter painter(this);
        if (m_color.alpha() < 255) {  // White and black behind it show the transparency.
            painter.fillRect(field, Qt::white);
            painter.fillRect(field.adjusted(field.width() / 2, 0, 0, 0), Qt::black);
        }
        painter.fillRect(field, m_color);
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawRect(field.adjusted(0, 0, -1, -1));
    }

private:
    void setColor(const QColor& color) {
        m_color = color;
        setToolTip(value());
        setAccessibleName(Texts::tr("Color") + u' ' + value());
        update();
    }

    void choose() {
        auto* dialog = new QColorDialog(m_color, this);
        dialog->setOption(QColorDialog::ShowAlphaChannel);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        connect(dialog, &QColorDialog::colorSelected, this, &ColorWell::setColor);
        dialog->open();
    }

    QColor m_color;
};

AlertAccessory lineField(const Alert& alert, QWidget* parent) {
    auto* field = new QLineEdit(alert.value.toString(), parent);
    if (alert.control == AlertControl::SecureInput) field->setEchoMode(QLineEdit::Password);
    field->setAccessibleName(alert.message);
    fix(field, kLine);
    return {field, field, [field] { return field->text(); }};
}

AlertAccessory textField(const Alert& alert, QWidget* parent) {
    const bool isEditable = alert.control == AlertControl::InputText;
    auto* field = new FocusFramed<QPlainTextEdit>(alert.value.toString(), parent);
    field->setFrameShape(QFrame::NoFrame);
    field->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    field->setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    field->setReadOnly(!isEditable);
    field->setTabChangesFocus(true);  // The buttons must be reachable by keyboard.
    field->setAccessibleName(alert.message);
    field->setFixedSize(kText);
    const auto value = [field] {
        // toPlainText() would convert no-break spaces to blanks.
        return field->document()->toRawText().replace(QChar::ParagraphSeparator, u'\n');
    };
    return {field, isEditable ? field : nullptr, value};
}

AlertAccessory popUp(const Alert& alert, QWidget* parent) {
    constexpr int kWidestList = 600;
    auto* box = new QComboBox(parent);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->addItems(alert.items);
    box->setCurrentIndex(alert.items.isEmpty() ? -1 : alert.value.toInt());
    box->view()->setTextElideMode(Qt::ElideMiddle);
    const int margin = box->style()->pixelMetric(QStyle::PM_ScrollBarExtent) + 8;
    box->view()->setMinimumWidth(qMin(box->view()->sizeHintForColumn(0) + margin, kWidestList));
    box->setAccessibleName(alert.message);
    fix(box, kLine);
    return {box, box, [box] { return box->currentIndex(); }};
}

AlertAccessory matrix(const Alert& alert, int width, QWidget* parent) {
    auto* area = new QScrollArea(parent);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidgetResizable(true);
    auto* rows = new QWidget;
    rows->setAccessibleName(alert.message);
    auto* layout = new QVBoxLayout(rows);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    auto* group = new QButtonGroup(rows);
    const int scroller = area->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    for (int index = 0; index < alert.items.size(); ++index) {
        auto* button = new QRadioButton(rows);
        setTitle(button, alert.items.at(index), qMax(kMatrixRow.width(), width - scroller));
        button->setMinimumHeight(qMax(kMatrixRow.height(), button->sizeHint().height()));
        button->setChecked(index == alert.value.toInt());
        group->addButton(button, index);
        layout->addWidget(button);
    }
    area->setWidget(rows);
    area->viewport()->setAutoFillBackground(false);
    rows->setAutoFillBackground(false);
    const QSize needed = rows->sizeHint();
    const bool scrolls = needed.height() > kMatrixHighest;
    area->setFixedSize(qMax(kMatrixRow.width(), needed.width() + (scrolls ? scroller : 0)),
                       scrolls ? kMatrixHighest : needed.height());
    area->setFocusPolicy(Qt::NoFocus);  // The buttons have the focus.
    return {area, group->checkedButton(), [group] { return group->checkedId(); }};
}

AlertAccessory checkBox(const Alert& alert, int width, QWidget* parent) {
    QCheckBox* box = makeAlertCheckBox(alert.controlTitle, qMax(kLine.width(), width), parent);
    box->setChecked(alert.value.toBool());
    box->setMinimumSize(kLine.expandedTo(box->sizeHint()));
    return {box, box, [box] { return box->isChecked(); }};
}

AlertAccessory colorWell(const Alert& alert, QWidget* parent) {
    auto* well = new ColorWell(QColor(alert.value.toString()), parent);
    fix(well, kLine);
    return {well, well, [well] { return well->value(); }};
}

}  // namespace

AlertAccessory makeAlertAccessory(const Alert& alert, int width, QWidget* parent) {
    switch (alert.control) {
        case AlertControl::None:
            return {};
        case AlertControl::Input:
        case AlertControl::SecureInput:
            return lineField(alert, parent);
        case AlertControl::CheckBox:
            return checkBox(alert, width, parent);
        case AlertControl::ColorWell:
            return colorWell(alert, parent);
        case AlertControl::InputText:
        case AlertControl::OutputText:
            return textField(alert, parent);
        case AlertControl::SelectionPopup:
            return popUp(alert, parent);
        case AlertControl::SelectionMatrix:
            return matrix(alert, width, parent);
    }
    return {};
}

QIcon alertIcon(const QString& name) {
    if (name.isEmpty() || name == u"AppIcon") return applicationIcon();
    if (const QString resource = ":/icons/" + name; QFile::exists(resource)) return QIcon(resource);
    const QIcon icon = symbolicIcon(name);
    return icon.isNull() ? applicationIcon() : icon;
}

QString withoutMnemonics(QString text) {
    return text.replace(u'&', "&&");
}

QCheckBox* makeAlertCheckBox(const QString& title, int width, QWidget* parent) {
    auto* box = new QCheckBox(parent);
    setTitle(box, title, width);
    return box;
}

int alertTextHeight(const QString& text, const QFont& font, int width) {
    QTextDocument document;
    document.setDefaultFont(font);
    prepare(document, text);
    document.setTextWidth(width);
    return static_cast<int>(std::ceil(document.size().height()));
}

AlertText::AlertText(const QString& text, const QFont& font, QWidget* parent) : FocusFramed(parent) {
    setFont(font);
    setReadOnly(true);
    setFrameShape(QFrame::NoFrame);
    viewport()->setAutoFillBackground(false);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    prepare(*document(), text);
    moveCursor(QTextCursor::Start);  // It was at the end, which the view would scroll to.
}

int AlertText::naturalWidth() const {
    QTextDocument measured;
    measured.setDefaultFont(font());
    prepare(measured, toPlainText());
    return static_cast<int>(std::ceil(measured.idealWidth()));
}

int AlertText::heightAt(int width) const {
    return alertTextHeight(toPlainText(), font(), width);
}

void AlertText::setSize(int width, int height) {
    const bool scrolls = heightAt(width) > height;
    setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    // In the tab order only if the keyboard can do something here.
    setFocusPolicy(scrolls ? Qt::StrongFocus : Qt::ClickFocus);
    setTextInteractionFlags(scrolls ? Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard
                                    : Qt::TextInteractionFlags(Qt::TextSelectableByMouse));
    setFixedSize(width, height);
}

AlertIcon::AlertIcon(const QString& name, QWidget* parent) : QWidget(parent), m_icon(alertIcon(name)) {
    setFixedSize(kSize, kSize);
}

void AlertIcon::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    m_icon.paint(&painter, rect());
}

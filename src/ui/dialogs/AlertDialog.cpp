#include "ui/dialogs/AlertDialog.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Texts.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace {

constexpr int kGap = 8;
constexpr int kMargin = 24;
constexpr int kIconGap = 16;
constexpr int kNarrowest = 310;
constexpr int kWidest = 440;
constexpr int kWidestOfLongText = 560;
constexpr int kLowestMessage = 48;
/// Reserve for the window's frame and title bar, and a margin.
constexpr int kWindowFrame = 64;

QString textOf(const Alert& alert) {
    return alert.subject.isEmpty() ? alert.message : alert.message + "\n\n" + alert.subject;
}

QFont titleFont(QFont font) {
    font.setBold(true);
    if (font.pointSizeF() > 0) font.setPointSizeF(font.pointSizeF() * 1.1);
    return font;
}

/// The width of everything except the text column.
constexpr int kBesidesColumn = kMargin + AlertIcon::kSize + kIconGap + kMargin;

/// Wide enough for the lines of the texts, up to a limit, and at least as wide as the buttons.
int columnWidth(const AlertText& title, const AlertText& message, int buttons, QSize screen) {
    const int texts = qMax(title.naturalWidth(), message.naturalWidth());
    int width = qBound(kNarrowest, texts, kWidest);
    if (message.heightAt(width) > screen.height() / 2) width = kWidestOfLongText;
    width = qMax(width, buttons - (kBesidesColumn - 2 * kMargin));
    return qMax(kNarrowest, qMin(width, screen.width() - kBesidesColumn));
}

}  // namespace

AlertDialog::AlertDialog(const Alert& alert, QWidget* parent) : QDialog(parent) {
    setWindowTitle(ApplicationInfo::name());
    setAccessibleName(alert.title);
    setAccessibleDescription(textOf(alert));
    const QSize available = screen()->availableSize();

    m_buttonBox = new QDialogButtonBox(this);
    addButtons(alert);
    const int widestButtons = qMin(kWidestOfLongText + kBesidesColumn, available.width()) - 2 * kMargin;
    if (m_buttonBox->sizeHint().width() > widestButtons) m_buttonBox->setOrientation(Qt::Vertical);
    m_title = new AlertText(alert.title, titleFont(font()), this);
    m_message = new AlertText(textOf(alert), font(), this);
    const int width = columnWidth(*m_title, *m_message, m_buttonBox->sizeHint().width(), available);
    setTexts(alert, width);

    auto* column = new QVBoxLayout;
    column->setSpacing(kGap);
    column->addWidget(m_title);
    column->addWidget(m_message);
    m_accessory = makeAlertAccessory(alert, width, this);
    if (m_accessory.widget) column->addWidget(m_accessory.widget, 0, Qt::AlignLeading);
    if (!alert.suppressionTitle.isEmpty()) {
        m_suppression = makeAlertCheckBox(alert.suppressionTitle, width, this);
        column->addWidget(m_suppression, 0, Qt::AlignLeading);
    }
    column->addStretch();

    auto* body = new QHBoxLayout;
    body->setSpacing(kIconGap);
    body->addWidget(new AlertIcon(alert.icon, this), 0, Qt::AlignTop);
    body->addLayout(column);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(kMargin, kMargin, kMargin, 2 * kGap);
    rows->setSpacing(2 * kGap);
    rows->addLayout(body);
    rows->addWidget(m_buttonBox);
    const int excess = rows->totalSizeHint().height() - (available.height() - kWindowFrame);
    if (excess > 0) m_message->setSize(width, qMax(kLowestMessage, m_message->height() - excess));
    rows->setSizeConstraint(QLayout::SetFixedSize);

    // Tab order is the reading order, independent of the order of creation.
    QWidget* last = m_message;
    for (QWidget* next : {m_accessory.focus, static_cast<QWidget*>(m_suppression)}) {
        if (!next) continue;
        setTabOrder(last, next);
        last = next;
    }
    for (QAbstractButton* button : m_buttonBox->buttons()) {
        setTabOrder(last, button);
        last = button;
    }
    if (m_accessory.focus) m_accessory.focus->setFocus();
}

void AlertDialog::addButtons(const Alert& alert) {
    const std::vector<AlertButton> shown =
        alert.buttons.empty() ? std::vector<AlertButton>{Texts::tr("OK")} : alert.buttons;
    m_response = alert.cancelResponse();
    for (long position = 0; position < std::ssize(shown); ++position) {
        const AlertButton& given = shown[static_cast<size_t>(position)];
        const bool cancels = shown.size() > 1 && kAlertFirstButton + position == alert.cancelResponse();
        const auto role = cancels         ? QDialogButtonBox::RejectRole
                          : position == 0 ? QDialogButtonBox::AcceptRole
                                          : QDialogButtonBox::DestructiveRole;
        QPushButton* button = m_buttonBox->addButton(withoutMnemonics(given.title), role);
        if (!given.keyEquivalent.isEmpty()) {
            const auto keys = QKeySequence::fromString(given.keyEquivalent, QKeySequence::PortableText);
            button->setShortcut(keys);
            button->setToolTip(keys.toString(QKeySequence::NativeText));
        }
        if (kAlertFirstButton + position == alert.defaultResponse()) {
            button->setDefault(true);
            button->setFocus();
        }
        connect(button, &QPushButton::clicked, this, [this, position] {
            m_response = kAlertFirstButton + position;
            accept();
        });
    }
}

void AlertDialog::setTexts(const Alert& alert, int width) {
    constexpr int kMaximumTitleLines = 4;
    const int highest = kMaximumTitleLines * m_title->fontMetrics().lineSpacing();
    m_title->setSize(width, qMin(m_title->heightAt(width), highest));
    m_title->setVisible(!alert.title.isEmpty());
    m_message->setSize(width, m_message->heightAt(width));
    m_message->setVisible(!textOf(alert).isEmpty());
}

AlertAnswer AlertDialog::answer() const {
    return {m_response, m_suppression && m_suppression->isChecked(),
            m_accessory.value ? m_accessory.value() : QVariant()};
}

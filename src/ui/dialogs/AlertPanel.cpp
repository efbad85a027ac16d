#include "ui/dialogs/AlertPanel.h"

#include "support/base/ApplicationInfo.h"
#include "ui/dialogs/AlertControls.h"

#include <QCheckBox>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include <utility>

namespace {

constexpr int kTextWidth = 300;
constexpr int kLowestText = 30;
constexpr int kBesidesText = 100;
constexpr int kMargin = 16;
constexpr int kGap = 8;
/// Reserve for the window's frame and title bar, and a margin.
constexpr int kWindowFrame = 64;

QFont sized(QFont font, int points, bool bold) {
    font.setPointSize(points);
    font.setBold(bold);
    return font;
}

}  // namespace

int AlertPanel::heightFor(const QString& message, const QFont& font) {
    return qMax(kLowestText, alertTextHeight(message, font, kTextWidth)) + kBesidesText;
}

AlertPanel::AlertPanel(const NonModalAlert& alert) : m_completion(alert.completion) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(ApplicationInfo::name());
    setAccessibleName(alert.title);
    setAccessibleDescription(alert.message);

    const QFont messageFont = sized(font(), 11, false);
    auto* title = new AlertText(alert.title, sized(font(), 14, true), this);
    title->setSize(kTextWidth, title->heightAt(kTextWidth));
    auto* message = new AlertText(alert.message, messageFont, this);
    message->setSize(kTextWidth, qMax(kLowestText, message->heightAt(kTextWidth)));

    auto* bottom = new QHBoxLayout;
    auto* button = new QPushButton(withoutMnemonics(alert.button), this);
    button->setDefault(true);
    button->setFocus();
    connect(button, &QPushButton::clicked, this, &AlertPanel::buttonPressed);
    if (!alert.checkboxTitle.isEmpty()) {
        const int width = kTextWidth - button->sizeHint().width() - kMargin;
        m_checkBox = makeAlertCheckBox(alert.checkboxTitle, width, this);
        bottom->addWidget(m_checkBox);
    }
    bottom->addStretch();
    bottom->addWidget(button, 0, Qt::AlignBottom);

    auto* column = new QVBoxLayout;
    column->setSpacing(kGap);
    column->addWidget(title);
    column->addWidget(message);
    column->addStretch();
    column->addLayout(bottom);
    auto* row = new QHBoxLayout(this);
    constexpr int kRight = kWidth - kMargin - AlertIcon::kSize - kMargin - kTextWidth;
    row->setContentsMargins(kMargin, kMargin, kRight, kMargin);
    row->setSpacing(kMargin);
    row->addWidget(new AlertIcon(alert.icon, this), 0, Qt::AlignTop);
    row->addLayout(column);

    // A title of two lines or a style with high buttons may need more height than that; the screen limits it.
    const int highest = screen()->availableSize().height() - kWindowFrame;
    const int needed = row->totalSizeHint().height();
    if (needed > highest)
        message->setSize(kTextWidth, qMax(kLowestText, message->height() + highest - needed));
    setFixedSize(kWidth, qMin(highest, qMax(needed, heightFor(alert.message, messageFont))));
}

void AlertPanel::buttonPressed() {
    const auto completion = std::exchange(m_completion, nullptr);
    const bool isChecked = m_checkBox && m_checkBox->isChecked();
    const QPointer<AlertPanel> self(this);
    if (!m_checkBox) close();
    if (completion) completion(isChecked);
    if (self && m_checkBox) close();
}

#include "documentation/window/PageNotice.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int kGap = 8;

}  // namespace

PageNotice::PageNotice(const QString& sentence, bool canOpenInBrowser, QWidget* parent) : QWidget(parent) {
    auto* label = new QLabel(sentence, this);
    label->setObjectName(QStringLiteral("sentence"));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignCenter);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(4 * kGap, 4 * kGap, 4 * kGap, 4 * kGap);
    layout->setSpacing(2 * kGap);
    layout->addStretch();
    layout->addWidget(label);
    if (canOpenInBrowser) {
        auto* button = new QPushButton(tr("&Open in Browser"), this);
        connect(button, &QPushButton::clicked, this, &PageNotice::browserRequested);
        layout->addWidget(button, 0, Qt::AlignHCenter);
        setFocusProxy(button);
    }
    layout->addStretch();
}

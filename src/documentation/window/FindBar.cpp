#include "documentation/window/FindBar.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

namespace {

constexpr int kGap = 8;

QToolButton* makeButton(const QString& name, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setToolTip(name);
    button->setAccessibleName(name);
    return button;
}

}  // namespace

FindBar::FindBar(const QIcon& closeIcon, QWidget* parent)
    : QWidget(parent), m_text(new QLineEdit(this)), m_found(new QLabel(this)) {
    m_text->setPlaceholderText(tr("Find in this page"));
    m_text->setAccessibleName(tr("Find in this page"));
    m_text->setClearButtonEnabled(true);
    m_text->setMaximumWidth(320);
    connect(m_text, &QLineEdit::textChanged, this, [this] { search(false); });
    auto* previous = makeButton(tr("Previous place"), this);
    auto* next = makeButton(tr("Next place"), this);
    auto* done = makeButton(tr("Close"), this);
    previous->setArrowType(Qt::UpArrow);
    next->setArrowType(Qt::DownArrow);
    done->setIcon(closeIcon);
    connect(previous, &QToolButton::clicked, this, [this] { search(true); });
    connect(next, &QToolButton::clicked, this, [this] { search(false); });
    connect(done, &QToolButton::clicked, this, &FindBar::close);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(kGap, kGap / 2, kGap, kGap / 2);
    layout->setSpacing(kGap / 2);
    layout->addWidget(m_text, 1);
    layout->addWidget(previous);
    layout->addWidget(next);
    layout->addWidget(m_found, 1);
    layout->addWidget(done);
    hide();
}

void FindBar::open() {
    show();
    m_text->setFocus();
    m_text->selectAll();
    if (!text().isEmpty()) search(false);
}

void FindBar::close() {
    if (isHidden()) return;
    hide();
    Q_EMIT closed();
}

QString FindBar::text() const {
    return m_text->text();
}

void FindBar::setFound(int places) {
    if (text().isEmpty()) {
        m_found->clear();
    } else if (places <= 0) {
        m_found->setText(tr("Not found"));
    } else {
        m_found->setText(places == 1 ? tr("1 place") : tr("%1 places").arg(places));
    }
}

void FindBar::search(bool backwards) {
    Q_EMIT searched(text(), backwards);
    if (text().isEmpty()) m_found->clear();
}

void FindBar::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        search(event->modifiers() & Qt::ShiftModifier);
    } else if (event->key() == Qt::Key_Escape) {
        close();
    } else {
        QWidget::keyPressEvent(event);
    }
}

#include "ui/window/TotalProgress.h"

#include "app/queue/QueueProgress.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>

#include <cmath>

TotalProgress::TotalProgress(const QueueProgress& progress, QWidget* parent)
    : QWidget(parent), m_progress(progress), m_bar(new QProgressBar(this)), m_label(new QLabel(this)) {
    constexpr int kMargin = 16;
    constexpr int kGap = 8;
    constexpr QSize kBar(120, 8);
    constexpr int kSteps = 1000;
    setObjectName(QStringLiteral("totalProgress"));
    m_bar->setObjectName(QStringLiteral("totalBar"));
    m_bar->setRange(0, kSteps);
    m_bar->setTextVisible(false);
    m_bar->setFixedSize(kBar);
    m_bar->setAccessibleName(tr("Progress of all movies"));
    m_label->setObjectName(QStringLiteral("totalLabel"));
    QFont bold = font();
    bold.setWeight(QFont::DemiBold);
    m_label->setFont(bold);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(kMargin, 0, kGap, 0);
    layout->setSpacing(kGap);
    layout->addWidget(m_bar, 0, Qt::AlignVCenter);
    layout->addWidget(m_label);
    connect(&progress, &QueueProgress::changed, this, &TotalProgress::refresh);
    refresh();
}

void TotalProgress::refresh() {
    const QString text = m_progress.text();
    setVisible(!text.isEmpty());
    if (text.isEmpty()) return;
    m_label->setText(text);
    m_bar->setValue(static_cast<int>(std::lround(m_progress.fraction().value_or(0) * m_bar->maximum())));
}

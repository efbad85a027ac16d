#include "ui/window/TotalProgress.h"

#include "app/queue/QueueProgress.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>

#include <cmath>

TotalProgress::TotalProgress(const QueueProgress& progress, QWidget* parent)
    : QWidget(parent),
      m_progress(progress),
      m_content(new QWidget(this)),
      m_bar(new QProgressBar(m_content)),
      m_label(new QLabel(m_content)) {
    constexpr int kMargin = 16;
    constexpr int kGap = 8;
    constexpr QSize kBar(120, 8);
    constexpr int kSteps = 1000;
    m_content->setObjectName(QStringLiteral("totalProgress"));
    m_bar->setObjectName(QStringLiteral("totalBar"));
    m_bar->setRange(0, kSteps);
    m_bar->setTextVisible(false);
    m_bar->setFixedSize(kBar);
    m_bar->setAccessibleName(tr("Progress of all movies"));
    m_label->setObjectName(QStringLiteral("totalLabel"));
    QFont bold = font();
    bold.setWeight(QFont::DemiBold);
    m_label->setFont(bold);
    auto* outer = new QHBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(m_content);
    auto* layout = new QHBoxLayout(m_content);
    layout->setContentsMargins(kMargin, 0, kGap, 0);
    layout->setSpacing(kGap);
    layout->addWidget(m_bar, 0, Qt::AlignVCenter);
    layout->addWidget(m_label);
    connect(&progress, &QueueProgress::changed, this, &TotalProgress::refresh);
    refresh();
}

void TotalProgress::refresh() {
    const QString text = m_progress.text();
    m_content->setVisible(!text.isEmpty());
    if (text.isEmpty()) return;
    m_label->setText(text);
    m_bar->setValue(static_cast<int>(std::lround(m_progress.fraction().value_or(0) * m_bar->maximum())));
}

#include "ui/window/DetailsWindow.h"

#include "app/queue/JobTexts.h"
#include "convert/ConversionJob.h"
#include "ui/look/Placement.h"

#include <QBoxLayout>
#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPushButton>
#include <QScrollBar>
#include <QTextEdit>

namespace {

constexpr int kMargin = 16;
constexpr int kGap = 8;
constexpr QSize kSize(680, 520);

void write(QTextDocument& document, const QString& title, const QList<DetailSection>& sections) {
    constexpr double kTitle = 1.3;
    const QFont font = document.defaultFont();
    QTextCursor cursor(&document);
    QTextCharFormat heading;
    heading.setFontWeight(QFont::DemiBold);
    QTextCharFormat large = heading;
    large.setFontPointSize(font.pointSizeF() * kTitle);
    QTextCharFormat fixed;
    fixed.setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    QTextBlockFormat first;
    first.setTopMargin(kMargin);
    QTextBlockFormat line;
    line.setTopMargin(2);
    cursor.insertText(title, large);
    for (const DetailSection& section : sections) {
        cursor.insertBlock(first, heading);
        cursor.insertText(section.title, heading);
        for (const QString& text : section.lines) {
            const QTextCharFormat format = section.isVerbatim ? fixed : QTextCharFormat();
            cursor.insertBlock(line, format);
            cursor.insertText(text, format);
        }
    }
}

}  // namespace

DetailsWindow::DetailsWindow(QWidget* parent) : QWidget(parent, Qt::Dialog) {
    setObjectName(QStringLiteral("detailsWindow"));
    m_text = new QTextEdit(this);
    m_text->setReadOnly(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_text->setAccessibleName(tr("Details"));
    m_text->document()->setDocumentMargin(kMargin);
    m_text->setFrameShape(QFrame::NoFrame);
    m_copy = new QPushButton(tr("&Copy"), this);
    m_copy->setObjectName(QStringLiteral("copyDetailsButton"));
    m_copy->setToolTip(tr("Copies all of it"));
    connect(m_copy, &QPushButton::clicked, this, &DetailsWindow::copy);
    auto* close = new QPushButton(tr("Close"), this);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    auto* buttons = new QHBoxLayout;
    buttons->setContentsMargins(kMargin, kGap, kMargin, kMargin);
    buttons->setSpacing(kGap);
    buttons->addWidget(m_copy);
    buttons->addStretch();
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_text);
    layout->addLayout(buttons);
    resize(kSize);
}

void DetailsWindow::showJob(const ConversionJob* job) {
    if (m_job) m_job->disconnect(this);
    m_job = job;
    m_text->clear();
    m_copy->setText(tr("&Copy"));
    connect(job, &ConversionJob::stateChanged, this, &DetailsWindow::refresh);
    connect(job, &ConversionJob::launched, this, &DetailsWindow::refresh);
    setWindowTitle(tr("Details of %1").arg(job->fileInfo().fileName));
    refresh();
    m_text->verticalScrollBar()->setValue(0);
    if (!isVisible()) centreOver(*this, parentWidget());
    show();
    raise();
    activateWindow();
    m_text->setFocus();
}

void DetailsWindow::refresh() {
    if (!m_job) return;
    const QList<DetailSection> sections = jobDetails(*m_job);
    m_plainText = m_job->fileInfo().fileName + "\n\n" + plainText(sections);
    const int position = m_text->verticalScrollBar()->value();
    m_text->clear();
    write(*m_text->document(), m_job->fileInfo().fileName, sections);
    m_text->moveCursor(QTextCursor::Start);
    m_text->verticalScrollBar()->setValue(position);
}

void DetailsWindow::copy() const {
    QGuiApplication::clipboard()->setText(m_plainText);
    m_copy->setText(tr("Copied"));
}

void DetailsWindow::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Cancel) || event->matches(QKeySequence::Close)) {
        close();
    } else {
        QWidget::keyPressEvent(event);
    }
}

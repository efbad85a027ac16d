#include "ui/window/DetailsPane.h"

#include "convert/ConversionJob.h"
#include "settings/Changes.h"
#include "ui/look/Colors.h"
#include "ui/look/Icons.h"
#include "ui/widgets/ElidedLabel.h"
#include "ui/window/DetailsDocument.h"

#include <QBoxLayout>
#include <QClipboard>
#include <QEvent>
#include <QGuiApplication>
#include <QPainter>
#include <QScrollBar>
#include <QSet>
#include <QTextBlock>
#include <QTextEdit>
#include <QTimer>
#include <QToolButton>

namespace {

constexpr int kMargin = 16;
constexpr int kGap = 8;
constexpr int kSmallGap = 4;
constexpr int kFocusFrame = 2;

/// The line at the upper edge, which is found again in a changed text.
class TopLine {
public:
    explicit TopLine(const QTextEdit& view)
        : m_scrolled(view.verticalScrollBar()->value()),
          m_line(view.cursorForPosition({}).block()),
          m_text(m_line.text()),
          m_top(topOf(view, m_line)) {
        for (QTextBlock line = m_line.previous(); line.isValid(); line = line.previous())
            m_alikeAbove += line.text() == m_text ? 1 : 0;
    }

    void restore(QTextEdit& view) const {
        int alike = m_alikeAbove;
        QTextBlock line = view.document()->begin();
        while (line.isValid() && (line.text() != m_text || alike-- > 0))
            line = line.next();
        QScrollBar& bar = *view.verticalScrollBar();
        const int now = bar.value();
        const bool isAtTop = m_scrolled == 0;
        bar.setValue(isAtTop || !line.isValid() ? m_scrolled : now + topOf(view, line) - m_top);
    }

private:
    static int topOf(const QTextEdit& view, const QTextBlock& line) {
        return view.cursorRect(QTextCursor(line)).top();
    }

    int m_scrolled;
    QTextBlock m_line;
    QString m_text;
    int m_top;
    int m_alikeAbove = 0;
};

}  // namespace

DetailsPane::DetailsPane(QWidget* parent) : QWidget(parent) {
    // The plan of a job that waits follows the settings.
    connect(&settings::Changes::shared(), &settings::Changes::changed, this, &DetailsPane::refresh);
}

/// Not before it is needed: a text view takes a third of a MiB.
void DetailsPane::makeContents() {
    if (m_text) return;
    m_text = new QTextEdit(this);
    m_text->setObjectName(QStringLiteral("detailsText"));
    m_text->setReadOnly(true);
    m_text->setUndoRedoEnabled(false);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_text->setAccessibleName(tr("Details"));
    m_text->setFrameShape(QFrame::NoFrame);
    m_text->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_text->installEventFilter(this);
    m_header = makeHeader();
    auto* framed = new QVBoxLayout;
    framed->setContentsMargins(kFocusFrame, kFocusFrame, kFocusFrame, kFocusFrame);
    framed->addWidget(m_text);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_header);
    layout->addLayout(framed);
    setTabOrder(m_text, m_copy);
    setTabOrder(m_copy, m_close);
    setFocusProxy(m_text);
}

QWidget* DetailsPane::makeHeader() {
    auto* header = new QWidget(this);
    m_name = new ElidedLabel(header);
    QFont bold = m_name->font();
    bold.setWeight(QFont::DemiBold);
    m_name->setFont(bold);
    m_state = new ElidedLabel(header);
    m_state->setTone(colors::Tone::Secondary);
    m_state->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    m_copy = new QToolButton(header);
    m_copy->setObjectName(QStringLiteral("copyDetailsButton"));
    m_copy->setToolTip(tr("Copies all of it"));
    m_copy->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_close = new QToolButton(header);
    m_close->setObjectName(QStringLiteral("closeDetailsButton"));
    m_close->setIcon(symbolicIcon(QStringLiteral("remove")));
    constexpr int kCross = 12;
    m_close->setIconSize({kCross, kCross});
    m_close->setToolTip(tr("Close the details"));
    m_close->setAccessibleName(tr("Close the details"));
    for (QToolButton* button : {m_copy, m_close}) {
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::StrongFocus);
    }
    connect(m_copy, &QToolButton::clicked, this, &DetailsPane::copy);
    connect(m_close, &QToolButton::clicked, this, &DetailsPane::closeRequested);
    auto* layout = new QHBoxLayout(header);
    layout->setContentsMargins(kMargin, kSmallGap, kGap, kSmallGap);
    layout->setSpacing(kGap);
    layout->addWidget(m_name, 1);
    layout->addWidget(m_state);
    layout->addSpacing(kGap);
    layout->addWidget(m_copy);
    layout->addWidget(m_close);
    return header;
}

void DetailsPane::setJob(const ConversionJob* job) {
    if (m_job ? m_job == job : !job && !m_text) return;
    makeContents();
    if (m_job) m_job->disconnect(this);
    m_job = job;
    m_details = {};
    m_text->clear();
    if (job) {
        connect(job, &ConversionJob::stateChanged, this, &DetailsPane::refresh);
        connect(job, &ConversionJob::launched, this, &DetailsPane::refresh);
        refresh();
    } else {
        render();
    }
    m_text->moveCursor(QTextCursor::Start);
    m_text->verticalScrollBar()->setValue(0);
}

const ConversionJob* DetailsPane::job() const {
    return m_job;
}

void DetailsPane::refresh() {
    if (!m_job || !isVisible()) return;
    JobDetails details = jobDetails(*m_job);
    if (details == m_details) return;
    m_details = std::move(details);
    render();
}

/// Keeps what is in view, and what is selected within a line, as the user may be reading.
void DetailsPane::render() {
    m_name->setText(m_details.name);
    m_state->setText(m_details.state);
    m_copy->setText(tr("Copy"));
    const TopLine top(*m_text);
    const QString selected = m_text->textCursor().selectedText();
    m_text->clear();
    writeDetails(*m_text->document(), m_details, {palette(), m_text->font(), layoutDirection()});
    m_text->moveCursor(QTextCursor::Start);
    if (!selected.isEmpty()) m_text->find(selected, QTextDocument::FindCaseSensitively);
    top.restore(*m_text);
}

void DetailsPane::copy() {
    QGuiApplication::clipboard()->setText(plainText(m_details));
    m_copy->setText(tr("Copied"));
    constexpr int kMilliseconds = 2000;
    QTimer::singleShot(kMilliseconds, m_copy, [this] { m_copy->setText(tr("Copy")); });
}

bool DetailsPane::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) update();
    return QWidget::eventFilter(watched, event);
}

void DetailsPane::showEvent(QShowEvent* event) {
    makeContents();
    QWidget::showEvent(event);
    refresh();
}

void DetailsPane::changeEvent(QEvent* event) {
    static const QSet<QEvent::Type> looks = {QEvent::PaletteChange, QEvent::FontChange, QEvent::StyleChange,
                                             QEvent::LayoutDirectionChange};
    if (m_text && looks.contains(event->type())) render();
    QWidget::changeEvent(event);
}

void DetailsPane::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    painter.fillRect(m_header->geometry(), palette().color(QPalette::Window));
    if (!m_text->hasFocus() || !window()->testAttribute(Qt::WA_KeyboardFocusChange)) return;
    QRect frame = rect();
    frame.setTop(m_header->geometry().bottom() + 1);
    painter.setPen(QPen(palette().color(QPalette::Highlight), kFocusFrame));
    painter.drawRect(frame.adjusted(1, 1, -1, -1));
}

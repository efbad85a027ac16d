#include "ui/window/EmptyView.h"

#include "ui/look/Colors.h"
#include "ui/look/Icons.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

/// Painted again for every palette; an image in a label would keep its colours.
class Picture : public QWidget {
public:
    explicit Picture(QWidget* parent) : QWidget(parent), m_icon(dropPicture()) { setFixedSize(160, 120); }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        m_icon.paint(&painter, rect());
    }

private:
    QIcon m_icon;
};

}  // namespace

EmptyView::EmptyView(QWidget* parent) : QWidget(parent) {
    auto* title = new QLabel(tr("Drop movies here"), this);
    QFont large = title->font();
    constexpr double kLarger = 1.5;
    large.setPointSizeF(large.pointSizeF() * kLarger);
    large.setWeight(QFont::Medium);
    title->setFont(large);
    auto* sentence = new QLabel(
        tr("Ravelin puts them into MP4 and leaves the picture as it is. Drop subtitle files along with them."),
        this);
    sentence->setWordWrap(true);
    sentence->setAlignment(Qt::AlignHCenter);
    constexpr int kComfortable = 420;
    sentence->setMaximumWidth(kComfortable);
    m_picture = new Picture(this);
    m_sentence = sentence;
    auto* button = new QPushButton(symbolicIcon("add"), tr("Add &Movies…"), this);
    button->setAutoDefault(true);
    setFocusProxy(button);
    button->setObjectName(QStringLiteral("addMoviesButton"));
    connect(button, &QPushButton::clicked, this, &EmptyView::addRequested);

    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(8);
    layout->addStretch();
    layout->addWidget(m_picture, 0, Qt::AlignCenter);
    layout->addSpacing(8);
    layout->addWidget(title, 0, Qt::AlignCenter);
    // An item with an alignment would not get the height of its second line.
    auto* line = new QHBoxLayout;
    constexpr int kBeforeTheStretches = 10;
    line->addStretch(1);
    line->addWidget(sentence, kBeforeTheStretches);
    line->addStretch(1);
    layout->addLayout(line);
    layout->addSpacing(8);
    layout->addWidget(button, 0, Qt::AlignCenter);
    layout->addStretch();
}

QSize EmptyView::sizeHint() const {
    constexpr QSize kUsual(640, 420);
    return kUsual;
}

void EmptyView::setDropHighlighted(bool highlighted) {
    if (m_highlighted == highlighted) return;
    m_highlighted = highlighted;
    update();
}

void EmptyView::resizeEvent(QResizeEvent*) {
    constexpr int kLines = 12;  // Title, sentence, button and what is between them.
    const int words = kLines * fontMetrics().height();
    m_picture->setVisible(height() >= m_picture->height() + words);
    m_sentence->setVisible(height() >= words);
}

void EmptyView::paintEvent(QPaintEvent*) {
    constexpr int kInset = 16;
    constexpr int kRadius = 12;
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    painter.setRenderHint(QPainter::Antialiasing);
    QPen pen(m_highlighted ? palette().color(QPalette::Highlight) : colors::restingBar(palette()),
             m_highlighted ? 2 : 1.5, m_highlighted ? Qt::SolidLine : Qt::DashLine);
    if (!m_highlighted) pen.setDashPattern({4, 4});
    painter.setPen(pen);
    if (m_highlighted) painter.setBrush(colors::selectedRow(palette()));
    painter.drawRoundedRect(rect().adjusted(kInset, kInset, -kInset, -kInset), kRadius, kRadius);
}

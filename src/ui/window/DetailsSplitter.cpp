#include "ui/window/DetailsSplitter.h"

#include "support/store/Defaults.h"
#include "ui/look/Colors.h"

#include <QPainter>

#include <utility>

namespace {

constexpr QLatin1StringView kHeightKey("DetailsHeight");
constexpr int kUsualHeight = 240;
constexpr int kLeastHeight = 120;
constexpr int kRow = 72;  ///< Of the list, the least that stays.
constexpr int kHandle = 7;

/// A hairline at its upper edge.
class Handle : public QSplitterHandle {
public:
    using QSplitterHandle::QSplitterHandle;

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), palette().color(QPalette::Window));
        painter.fillRect(QRect(0, 0, width(), 1), colors::hairline(palette()));
    }
};

}  // namespace

DetailsSplitter::DetailsSplitter(QWidget* parent) : QSplitter(Qt::Vertical, parent) {
    setChildrenCollapsible(false);
    setHandleWidth(kHandle);
    connect(this, &QSplitter::splitterMoved, this,
            [this] { setDefaultInt(kHeightKey, sizes().constLast()); });
}

QSplitterHandle* DetailsSplitter::createHandle() {
    return new Handle(orientation(), this);
}

void DetailsSplitter::setPaneOpen(bool isOpen) {
    m_isOpen = isOpen;
    arrange();
}

void DetailsSplitter::resizeEvent(QResizeEvent* event) {
    QSplitter::resizeEvent(event);
    arrange();
}

void DetailsSplitter::arrange() {
    if (count() < 2) return;
    const bool isRoomForBoth = height() >= kRow + kHandle + kLeastHeight;
    const bool areBoth = m_isOpen && isRoomForBoth;
    widget(0)->setMinimumHeight(areBoth ? kRow : 1);
    widget(1)->setMinimumHeight(areBoth ? kLeastHeight : 1);
    widget(0)->setVisible(!m_isOpen || isRoomForBoth);
    widget(1)->setVisible(m_isOpen);
    if (std::exchange(m_areBoth, areBoth) == areBoth || !areBoth) return;
    refresh();  // Shows the handle, which takes its part.
    const qint64 stored = defaultInt(kHeightKey);
    const qint64 wanted = stored > 0 ? stored : kUsualHeight;
    const int most = height() - kHandle - kRow;
    const auto pane = static_cast<int>(qBound(qint64{kLeastHeight}, wanted, qint64{most}));
    setSizes({height() - kHandle - pane, pane});
}

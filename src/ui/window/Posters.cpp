#include "ui/window/Posters.h"

#include "convert/ConversionJob.h"
#include "settings/Settings.h"
#include "ui/window/JobListModel.h"
#include "ui/window/PosterFrame.h"

#include <QEvent>
#include <QImage>
#include <QListView>
#include <QScrollBar>

namespace {

constexpr qsizetype kMostBytes = 4 << 20;  // 200 posters on a usual screen.
constexpr qsizetype kMostFailures = 10000;
/// While the user scrolls, movies come, or the window is not painted yet, nothing is taken.
constexpr int kPauseMilliseconds = 150;

QSize pixels(double scale) {
    return {qRound(PosterFrame::kSize.width() * scale), qRound(PosterFrame::kSize.height() * scale)};
}

}  // namespace

Posters::Posters(QListView& list, std::function<bool()> isHeldUp)
    : QObject(&list),
      m_list(list),
      m_isHeldUp(std::move(isHeldUp)),
      m_posters(kMostBytes),
      m_without(kMostFailures) {
    m_timer.setSingleShot(true);
    m_timer.setInterval(kPauseMilliseconds);
    connect(&m_timer, &QTimer::timeout, this, &Posters::takeNext);
    connect(&m_taker, &PosterTaker::taken, this, &Posters::keep);
    connect(list.verticalScrollBar(), &QScrollBar::valueChanged, this, &Posters::look);
    list.viewport()->installEventFilter(this);
    settings::ShowPosters.onChange(this, [this] { onSettingChanged(); });
}

void Posters::setModel(JobListModel* model) {
    m_model = model;
    connect(model, &JobListModel::runningChanged, this, &Posters::look);
    connect(model, &JobListModel::rowsInserted, this, &Posters::look);
    connect(model, &JobListModel::rowsRemoved, this, &Posters::look);
    connect(model, &JobListModel::layoutChanged, this, &Posters::look);
    look();
}

bool Posters::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::Show) look();
    return QObject::eventFilter(watched, event);
}

Posters::Wish Posters::wishOf(const ConversionJob& job) {
    const MKVFileInfo& info = job.fileInfo();
    Wish wish{{info.fileURL.toLocalFile()}, info.runtimeSeconds};
    // The source may have been removed.
    if (job.state() == JobState::Finished) wish.paths.append(info.destinationURL.toLocalFile());
    return wish;
}

QString Posters::keyOf(const Wish& wish) {
    return wish.paths.constFirst() + QChar::Null + QString::number(wish.runtimeSeconds.value_or(0));
}

QPixmap Posters::stored(const Wish& wish) const {
    const QPixmap* poster = m_posters.object(keyOf(wish));
    return poster ? *poster : QPixmap();
}

QPixmap Posters::poster(const ConversionJob& job) const {
    return m_posters.isEmpty() ? QPixmap() : stored(wishOf(job));
}

QPixmap Posters::poster(const QString& path, std::optional<qint32> runtimeSeconds) {
    m_asked = Wish{{path}, runtimeSeconds};
    if (isMissing(*m_asked)) look();
    return stored(*m_asked);
}

bool Posters::isMissing(const Wish& wish) const {
    const QPixmap poster = stored(wish);
    // The window may have come to a screen of another scale.
    const bool isThere = !poster.isNull() && poster.devicePixelRatio() == m_list.devicePixelRatioF();
    return !isThere && !m_without.contains(wish.paths.join(QChar::Null));
}

void Posters::look() {
    if (!m_isStopped && settings::ShowPosters.value()) m_timer.start();
}

void Posters::stop() {
    m_isStopped = true;
    m_timer.stop();
    m_taker.cancel();
}

void Posters::onSettingChanged() {
    if (settings::ShowPosters.value()) {
        look();
        return;
    }
    m_timer.stop();
    m_taker.cancel();
    m_posters.clear();
    m_without.clear();
    m_list.viewport()->update();
    Q_EMIT changed({});
}

void Posters::visitRows(const std::function<bool(const ConversionJob& job, int row)>& visit) const {
    if (!m_model || !m_list.isVisible()) return;
    const int bottom = m_list.viewport()->height();
    QModelIndex index = m_list.indexAt(QPoint(m_list.viewport()->width() / 2, 0));
    while (index.isValid() && m_list.visualRect(index).top() < bottom) {
        if (!visit(*m_model->job(index), index.row())) return;
        index = m_model->index(index.row() + 1);
    }
}

std::optional<Posters::Wish> Posters::nextWish() const {
    if (m_asked && isMissing(*m_asked)) return m_asked;
    std::optional<Wish> found;
    visitRows([&](const ConversionJob& job, int) {
        const Wish wish = wishOf(job);
        if (!job.isUnprobed() && isMissing(wish)) found = wish;
        return !found;
    });
    return found;
}

void Posters::takeNext() {
    if (m_isStopped || m_taker.isBusy() || m_isHeldUp()) return;
    const std::optional<Wish> wish = nextWish();
    if (!wish) return;
    m_taken = *wish;
    m_scale = m_list.devicePixelRatioF();
    m_taker.take({wish->paths, wish->runtimeSeconds, pixels(m_scale)});
}

void Posters::keep(const QByteArray& rgb) {
    constexpr int kBytesPerPixel = 3;
    const QSize size = pixels(m_scale);
    if (m_asked && keyOf(*m_asked) == keyOf(m_taken)) m_asked.reset();
    if (rgb.isEmpty()) {
        m_without.insert(m_taken.paths.join(QChar::Null), new char(0));
    } else {
        const QImage raw(reinterpret_cast<const uchar*>(rgb.constData()), size.width(), size.height(),
                         qsizetype{kBytesPerPixel} * size.width(), QImage::Format_RGB888);
        constexpr qsizetype kBytesPerStored = 4;
        auto* poster = new QPixmap(QPixmap::fromImage(raw));
        poster->setDevicePixelRatio(m_scale);
        m_posters.insert(keyOf(m_taken), poster, kBytesPerStored * size.width() * size.height());
        updateRows(keyOf(m_taken));
        Q_EMIT changed(m_taken.paths.constFirst());
    }
    takeNext();
}

void Posters::updateRows(const QString& key) {
    visitRows([&](const ConversionJob& job, int row) {
        if (keyOf(wishOf(job)) == key) m_list.update(m_model->index(row));
        return true;
    });
}

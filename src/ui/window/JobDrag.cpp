#include "ui/window/JobDrag.h"

#include "convert/ConversionJob.h"
#include "ui/look/Colors.h"
#include "ui/window/JobListModel.h"
#include "ui/window/JobMenu.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QMimeData>
#include <QPainter>
#include <QSet>
#include <QWidget>

namespace jobdrag {

namespace {

constexpr QLatin1StringView kRows("application/x-ravelin-rows");

/// What stands for a job while it is dragged: it may be gone when it is dropped.
QByteArray nameOf(const ConversionJob* job) {
    return QByteArray::number(reinterpret_cast<quintptr>(job));
}

QByteArray processName() {
    return QByteArray::number(QCoreApplication::applicationPid());
}

}  // namespace

std::unique_ptr<QMimeData> dataOf(const QList<ConversionJob*>& jobs) {
    auto data = std::make_unique<QMimeData>();
    QList<QUrl> urls;
    QByteArrayList names{processName()};
    for (const ConversionJob* job : jobs) {
        const FileUrl& output = job->fileInfo().destinationURL;
        const bool isFile = job->state() == JobState::Finished && QFileInfo(output.toLocalFile()).isFile();
        if (isFile) urls.append(output.toUrl());
        if (isFile || job->state() == JobState::Queued) names.append(nameOf(job));
    }
    if (names.size() == 1) return nullptr;
    data->setData(kRows, names.join(' '));
    if (!urls.isEmpty()) data->setUrls(urls);
    return data;
}

bool isOwn(const QMimeData& data) {
    return data.data(kRows).startsWith(processName() + ' ');
}

bool isMove(const QMimeData& data) {
    return isOwn(data) && !data.hasUrls();
}

QList<ConversionJob*> jobsOf(const QMimeData& data, const JobListModel& model) {
    QList<ConversionJob*> jobs;
    if (!isOwn(data)) return jobs;
    const QByteArrayList list = data.data(kRows).split(' ').mid(1);
    const QSet<QByteArray> names(list.cbegin(), list.cend());
    for (int row = 0; row < model.rowCount(); ++row) {
        ConversionJob* job = model.job(model.index(row));
        if (names.contains(nameOf(job))) jobs.append(job);
    }
    return jobs;
}

QPixmap picture(const QList<ConversionJob*>& jobs, const QWidget& widget) {
    constexpr int kMargin = 10;
    constexpr int kWidth = 300;
    constexpr qreal kRadius = 6;
    const QFontMetrics metrics(widget.font());
    const QString title = metrics.elidedText(jobmenu::subjectOf(jobs), Qt::ElideMiddle, kWidth);
    const QSize size(metrics.horizontalAdvance(title) + 2 * kMargin, metrics.height() + kMargin);
    const qreal ratio = widget.devicePixelRatioF();
    QPixmap pixmap(size * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colors::restingBar(widget.palette()));
    painter.setBrush(colors::selectedRow(widget.palette()));
    painter.drawRoundedRect(QRectF(QPointF(0.5, 0.5), size - QSizeF(1, 1)), kRadius, kRadius);
    painter.setFont(widget.font());
    painter.setPen(widget.palette().color(QPalette::Text));
    painter.drawText(QRect(QPoint(), size), Qt::AlignCenter, title);
    return pixmap;
}

}  // namespace jobdrag

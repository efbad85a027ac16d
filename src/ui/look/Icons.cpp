#include "ui/look/Icons.h"

#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSvgRenderer>

namespace {

/// The drawing in the given colours.
QByteArray coloured(const QString& file, const QColor& color, const QColor& accent) {
    QFile svg(file);
    if (!svg.open(QIODevice::ReadOnly)) return {};
    QByteArray drawing = svg.readAll();
    drawing.replace("currentColor", color.name().toLatin1());
    drawing.replace("accentColor", accent.name().toLatin1());
    return drawing;
}

QPalette::ColorGroup groupFor(QIcon::Mode mode) {
    return mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
}

/// Paints a line drawing in the current colours of the palette.
class SymbolicIconEngine : public QIconEngine {
public:
    explicit SymbolicIconEngine(QString file, colors::Tone tone = colors::Tone::Normal)
        : m_file(std::move(file)), m_tone(tone) {}

    QIconEngine* clone() const override { return new SymbolicIconEngine(*this); }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
        const qreal scale = painter->device()->devicePixelRatio();
        QPixmap image = pixmap((QSizeF(rect.size()) * scale).toSize(), mode, state);
        image.setDevicePixelRatio(scale);
        painter->drawPixmap(rect.topLeft(), image);
    }

    /// Kept, since reading a drawing takes longer than the rest of a row.
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        const QString key = QStringLiteral("%1 %2 %3x%4 %5 %6")
                                .arg(m_file)
                                .arg(static_cast<int>(m_tone))
                                .arg(size.width())
                                .arg(size.height())
                                .arg(mode)
                                .arg(QApplication::palette().cacheKey());
        QPixmap image;
        if (QPixmapCache::find(key, &image)) return image;
        image = QPixmap(size);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        draw(painter, QRect(QPoint(), size), mode);
        painter.end();
        QPixmapCache::insert(key, image);
        return image;
    }

private:
    void draw(QPainter& painter, const QRect& rect, QIcon::Mode mode) const {
        const QPalette palette = QApplication::palette();
        const auto role = mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::WindowText;
        const QColor color = m_tone == colors::Tone::Normal ? palette.color(groupFor(mode), role)
                                                            : colors::text(palette, m_tone);
        QSvgRenderer renderer(coloured(m_file, color, palette.color(groupFor(mode), QPalette::Highlight)));
        renderer.setAspectRatioMode(Qt::KeepAspectRatio);
        renderer.render(&painter, rect);
    }

    QString m_file;
    colors::Tone m_tone;
};

}  // namespace

QIcon symbolicIcon(const QString& name) {
    return symbolicIcon(name, colors::Tone::Normal);
}

QIcon symbolicIcon(const QString& name, colors::Tone tone) {
    return QIcon(new SymbolicIconEngine(QStringLiteral(":/icons/symbolic/%1.svg").arg(name), tone));
}

QIcon dropPicture() {
    return QIcon(new SymbolicIconEngine(QStringLiteral(":/icons/drop-movies.svg")));
}

QIcon applicationIcon() {
    static const QIcon icon = [] {
        QIcon sizes;
        for (const int size : {16, 24, 32, 48, 64, 128, 256})
            sizes.addFile(QStringLiteral(":/icons/application/%1.png").arg(size), QSize(size, size));
        return sizes;
    }();
    return icon;
}

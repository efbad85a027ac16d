#pragma once

#include <QPixmap>
#include <QWidget>

class QPainter;

/// Paints a movie's picture with rounded corners; a null one leaves its place tinted.
void paintPoster(QPainter& painter, const QRect& rect, const QPixmap& poster, const QPalette& palette);

/// The picture of the movie on the sheet. Main thread only.
class PosterFrame : public QWidget {
    Q_OBJECT

public:
    /// In device-independent pixels.
    static constexpr QSize kSize{96, 54};

    explicit PosterFrame(QWidget* parent = nullptr);

    const QPixmap& poster() const { return m_poster; }
    void setPoster(const QPixmap& poster);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QPixmap m_poster;
};

#pragma once

#include "ui/look/Colors.h"

#include <QString>
#include <QWidget>

/// One line of plain text. Text that is too long is shortened in the middle, so that both the beginning and
/// the end of a file name are visible; the tool tip then shows the whole text. Main thread only.
class ElidedLabel : public QWidget {
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    QString text() const { return m_text; }
    void setText(const QString& text);
    /// Where text that is too long is shortened.
    void setElideMode(Qt::TextElideMode mode);
    void setTone(colors::Tone tone);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QString shown() const;
    void refreshToolTip();

    QString m_text;
    Qt::TextElideMode m_mode = Qt::ElideMiddle;
    colors::Tone m_tone = colors::Tone::Normal;
};

#pragma once

#include <QString>
#include <QWidget>

/// One line of plain text that is cut in the middle where it does not fit, so that both the beginning of a
/// file's name and its end can be read. The whole text is the tool tip then.
class ElidedLabel : public QWidget {
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    QString text() const { return m_text; }
    void setText(const QString& text);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QString shown() const;

    QString m_text;
};

#pragma once

#include <QWidget>

class QPushButton;

/// What the window shows while the list is empty: where to drop movies, in a picture and a sentence.
class EmptyView : public QWidget {
    Q_OBJECT

public:
    explicit EmptyView(QWidget* parent = nullptr);

    /// Movies are being dragged over the window: the picture answers.
    void setDropHighlighted(bool highlighted);

Q_SIGNALS:
    void addRequested();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool m_highlighted = false;
};

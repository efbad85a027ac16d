#pragma once

#include <QWidget>

class QPushButton;

/// Shown while the list is empty: explains where to drop movies, with a picture and a sentence. Main thread
/// only.
class EmptyView : public QWidget {
    Q_OBJECT

public:
    explicit EmptyView(QWidget* parent = nullptr);

    /// Highlights the picture while movies are dragged over the window.
    void setDropHighlighted(bool highlighted);

Q_SIGNALS:
    void addRequested();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool m_highlighted = false;
};

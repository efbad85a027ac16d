#pragma once

#include <QWidget>

/// Shown while the list is empty: explains where to drop movies, with a picture and a sentence, which give
/// way where there is no room. Main thread only.
class EmptyView : public QWidget {
    Q_OBJECT

public:
    explicit EmptyView(QWidget* parent = nullptr);

    /// Highlights the picture while movies are dragged over the window.
    void setDropHighlighted(bool highlighted);

    // Fixed, so that the layouts above do not have the sentence wrapped at each width that they consider.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {}; }
    bool hasHeightForWidth() const override { return false; }

Q_SIGNALS:
    void addRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* m_picture = nullptr;
    QWidget* m_sentence = nullptr;
    bool m_highlighted = false;
};

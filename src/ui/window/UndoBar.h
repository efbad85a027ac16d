#pragma once

#include <QWidget>

class ElidedLabel;
class FlatButton;
class Removals;

/// What was removed last, and the button that brings it back, over the lower edge of its parent; hidden while
/// there is nothing to undo. Main thread only.
class UndoBar : public QWidget {
    Q_OBJECT

public:
    /// `removals` must outlive the bar. `parent` must not be null.
    UndoBar(Removals& removals, QWidget* parent);

    QWidget* undoButton() const;

Q_SIGNALS:
    /// The bar is about to be hidden and had the focus.
    void focusReleased();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void refresh();
    void place();

    Removals& m_removals;
    ElidedLabel* m_label;
    FlatButton* m_undo;
};

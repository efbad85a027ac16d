#pragma once

#include <QPushButton>

/// A button without a frame within a line of text: a word in the colour of links or, if it has an icon, that
/// icon. Return presses it, too, when it has the focus. Main thread only.
class FlatButton : public QPushButton {
    Q_OBJECT

public:
    explicit FlatButton(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int textWidth() const;
};

#pragma once

#include <QComboBox>

/// A combo box whose text ends with an ellipsis where it is too long; styles cut it off. Main thread only.
class ElidedComboBox : public QComboBox {
    Q_OBJECT

public:
    using QComboBox::QComboBox;

protected:
    void paintEvent(QPaintEvent* event) override;
    /// The place of the text.
    QRect textRect() const;
};

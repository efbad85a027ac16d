#pragma once

#include <QWidget>

class ElidedLabel;
class QPushButton;

/// One line above the list with a text, an answer that is proposed and another one; hidden at first. Main
/// thread only.
class NoticeBar : public QWidget {
    Q_OBJECT

public:
    explicit NoticeBar(QWidget* parent = nullptr);

    /// The last one in the order of the Tab key.
    QPushButton* otherButton() const { return m_other; }

Q_SIGNALS:
    /// The bar is about to be hidden and had the focus.
    void focusReleased();

protected:
    QPushButton* proposedButton() const { return m_proposed; }
    /// Shows the bar with this text, which a screen reader says.
    void announce(const QString& text);
    /// Shows another text, without a screen reader saying it.
    void setText(const QString& text);
    void conceal();
    void paintEvent(QPaintEvent* event) override;

private:
    ElidedLabel* m_label = nullptr;
    QPushButton* m_proposed = nullptr;
    QPushButton* m_other = nullptr;
};

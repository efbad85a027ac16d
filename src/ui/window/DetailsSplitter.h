#pragma once

#include <QSplitter>

/// The list with the details below it, its first and its second widget. Where there is no room for both, the
/// open pane takes the place of the list. The height that the user gives it is remembered. Main thread only.
class DetailsSplitter : public QSplitter {
    Q_OBJECT

public:
    explicit DetailsSplitter(QWidget* parent = nullptr);

    void setPaneOpen(bool isOpen);
    bool isPaneOpen() const { return m_isOpen; }

protected:
    QSplitterHandle* createHandle() override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void arrange();

    bool m_isOpen = false;
    bool m_areBoth = false;  ///< The list is beside the open pane.
};

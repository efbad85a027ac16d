#pragma once

#include <QIcon>
#include <QWidget>

class QLabel;
class QLineEdit;

/// The line below a page for finding text in it. Return finds the next place, Shift+Return the one before,
/// Escape closes.
class FindBar : public QWidget {
    Q_OBJECT

public:
    explicit FindBar(const QIcon& closeIcon, QWidget* parent = nullptr);

    /// Shows it with its text selected, so that typing replaces it.
    void open();
    void close();
    QString text() const;
    /// What the last search found.
    void setFound(int places);

Q_SIGNALS:
    /// An empty text: nothing is looked for any more.
    void searched(const QString& text, bool backwards);
    void closed();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void search(bool backwards);

    QLineEdit* m_text = nullptr;
    QLabel* m_found = nullptr;
};

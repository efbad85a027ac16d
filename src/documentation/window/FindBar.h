#pragma once

#include <QIcon>
#include <QWidget>

class QLabel;
class QLineEdit;

/// The search bar below a page. Return finds the next match, Shift+Return the previous one, Escape closes the
/// bar. Main thread only.
class FindBar : public QWidget {
    Q_OBJECT

public:
    explicit FindBar(const QIcon& closeIcon, QWidget* parent = nullptr);

    /// Shows the bar with its text selected, so that typing replaces it.
    void open();
    void close();
    QString text() const;
    /// Shows the number of matches of the last search.
    void setFound(int places);

Q_SIGNALS:
    /// The user searches for `text`; empty: end the search.
    void searched(const QString& text, bool backwards);
    void closed();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void search(bool backwards);

    QLineEdit* m_text = nullptr;
    QLabel* m_found = nullptr;
};

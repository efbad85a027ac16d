#pragma once

#include <QPointer>
#include <QWidget>

class ConversionJob;
class QPushButton;
class QTextEdit;

/// Shows everything that is known about a job, as text that can be selected and copied. Follows the job while
/// it lives. Main thread only.
class DetailsWindow : public QWidget {
    Q_OBJECT

public:
    explicit DetailsWindow(QWidget* parent = nullptr);

    /// Shows the window in front of the others.
    void showJob(const ConversionJob* job);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void refresh();
    void copy() const;

    QPointer<const ConversionJob> m_job;
    QTextEdit* m_text = nullptr;
    QPushButton* m_copy = nullptr;
    QString m_plainText;
};

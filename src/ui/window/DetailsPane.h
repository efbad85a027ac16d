#pragma once

#include "app/queue/JobDetails.h"

#include <QPointer>
#include <QWidget>

class ConversionJob;
class ElidedLabel;
class QLabel;
class QTextEdit;
class QToolButton;

/// Shows everything that is known about a job, as text that can be selected and copied. Follows the job, but
/// not its progress, while it is shown. Main thread only.
class DetailsPane : public QWidget {
    Q_OBJECT

public:
    explicit DetailsPane(QWidget* parent = nullptr);

    /// Null: the pane is empty.
    void setJob(const ConversionJob* job);
    const ConversionJob* job() const;

Q_SIGNALS:
    void closeRequested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void makeContents();
    QWidget* makeHeader();
    void refresh();
    void render();
    void copy();

    QPointer<const ConversionJob> m_job;
    JobDetails m_details;  ///< What is shown.
    ElidedLabel* m_name = nullptr;
    ElidedLabel* m_state = nullptr;
    QTextEdit* m_text = nullptr;
    QToolButton* m_copy = nullptr;
    QToolButton* m_close = nullptr;
    QWidget* m_header = nullptr;
};

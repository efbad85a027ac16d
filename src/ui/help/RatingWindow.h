#pragma once

#include <QPointer>
#include <QWidget>

#include <memory>

class PXRatingWindowController;
class QAbstractButton;

namespace Ui {
class PXRatingWindow;
}

/// The small window that asks how the user likes the application. Deletes itself when it is closed. Main
/// thread only.
class RatingWindow : public QWidget {
    Q_OBJECT

public:
    /// `controller` must live until the window reports to it that it closes.
    explicit RatingWindow(PXRatingWindowController& controller, QWidget* parent = nullptr);
    ~RatingWindow() override;

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void styleTexts();
    void connectButtons();
    void showView();
    void adjustReviewButtons();

    QPointer<PXRatingWindowController> m_controller;
    std::unique_ptr<Ui::PXRatingWindow> m_ui;
};

#include "ui/help/RatingWindow.h"

#include "feedback/PXRatingWindowController.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Format.h"
#include "ui/look/Icons.h"
#include "ui/look/Placement.h"
#include "ui_PXRatingWindow.h"

#include <QCloseEvent>
#include <QKeyEvent>

namespace {

constexpr int kIconSize = 64;
/// Breaks the sentence into two lines of about the same length.
constexpr int kIntroMargin = 64;

QFont light(QFont font, int points) {
    font.setPointSize(points);
    font.setWeight(QFont::Light);
    return font;
}

void setReviewButton(QAbstractButton& button, const PXRatingWindowController::ReviewButton& review) {
    if (!review.title.isEmpty()) button.setText(review.title);
    button.setIcon(symbolicIcon(review.icon));
    button.setEnabled(review.isEnabled);
}

}  // namespace

RatingWindow::RatingWindow(PXRatingWindowController& controller, QWidget* parent)
    : QWidget(parent, Qt::Dialog), m_controller(&controller), m_ui(std::make_unique<Ui::PXRatingWindow>()) {
    setAttribute(Qt::WA_DeleteOnClose);
    // The window does not take the focus: a user who types elsewhere continues there.
    setAttribute(Qt::WA_ShowWithoutActivating);
    m_ui->setupUi(this);
    setWindowTitle(ApplicationInfo::name());
    m_ui->applicationIcon->setPixmap(
        applicationIcon().pixmap(QSize(kIconSize, kIconSize), devicePixelRatioF()));
    m_ui->introTextField->setContentsMargins(kIntroMargin, 0, kIntroMargin, 0);
    styleTexts();
    connectButtons();
    connect(&controller, &PXRatingWindowController::viewChanged, this, &RatingWindow::showView);
    connect(&controller, &PXRatingWindowController::closeRequested, this, &QWidget::close);
    const auto showIntro = [this, &controller] { m_ui->introTextField->setText(controller.introText()); };
    connect(&controller, &PXRatingWindowController::introTextChanged, this, showIntro);
    showIntro();
    showView();
    centreOver(*this, parent);
}

RatingWindow::~RatingWindow() = default;

void RatingWindow::styleTexts() {
    for (QWidget* button :
         QList<QWidget*>{m_ui->ratemacupdateButton, m_ui->rateappstoreButton, m_ui->notnowButton,
                         m_ui->happyButton, m_ui->notsureButton, m_ui->problemButton, m_ui->feedbackButton}) {
        button->setFont(light(button->font(), 18));
    }
    for (QWidget* text : QList<QWidget*>{m_ui->awesomeText, m_ui->introText, m_ui->sorryText})
        text->setFont(light(text->font(), 14));
    m_ui->happyButton->setIcon(symbolicIcon("mood-happy"));
    m_ui->notsureButton->setIcon(symbolicIcon("mood-unsure"));
    m_ui->problemButton->setIcon(symbolicIcon("mood-problem"));
}

void RatingWindow::connectButtons() {
    using Controller = PXRatingWindowController;
    const auto connectTo = [this](QAbstractButton* button, void (Controller::*action)()) {
        connect(button, &QAbstractButton::clicked, m_controller, action);
    };
    connectTo(m_ui->happyButton, &Controller::happyClicked);
    connectTo(m_ui->notsureButton, &Controller::notsureClicked);
    connectTo(m_ui->problemButton, &Controller::problemsClicked);
    connectTo(m_ui->rateappstoreButton, &Controller::rateappstoreClicked);
    connectTo(m_ui->ratemacupdateButton, &Controller::ratemacupdateClicked);
    connectTo(m_ui->notnowButton, &Controller::notnowClicked);
    connectTo(m_ui->closeButton, &Controller::closeClicked);
    connectTo(m_ui->dontshowButton, &Controller::dontshowClicked);
    connect(m_ui->feedbackButton, &QAbstractButton::clicked, m_controller,
            [this] { m_controller->sendfeedbackClicked(m_ui->feedbackTextField->toPlainText()); });
}

void RatingWindow::showView() {
    switch (m_controller->view()) {
        case PXRatingWindowController::View::Initial:
            m_ui->views->setCurrentWidget(m_ui->initialView);
            m_ui->happyButton->setFocus();
            return;
        case PXRatingWindowController::View::Happy:
            adjustReviewButtons();
            m_ui->views->setCurrentWidget(m_ui->happyView);
            m_ui->notnowButton->setFocus();
            return;
        case PXRatingWindowController::View::Angry:
            m_ui->views->setCurrentWidget(m_ui->angryView);
            m_ui->feedbackTextField->setFocus();
            return;
    }
}

void RatingWindow::adjustReviewButtons() {
    setReviewButton(*m_ui->rateappstoreButton, m_controller->appStoreButton());
    setReviewButton(*m_ui->ratemacupdateButton, m_controller->macUpdateButton());
}

void RatingWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    if (m_controller) m_controller->windowWillClose();
}

void RatingWindow::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Cancel) || event->matches(QKeySequence::Close)) {
        close();
    } else {
        QWidget::keyPressEvent(event);
    }
}

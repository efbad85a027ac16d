#include "feedback/PXRatingWindowController.h"

#include "support/alerts/Alert.h"
#include "support/base/ApplicationInfo.h"
#include "support/base/Text.h"
#include "support/base/Texts.h"
#include "support/reports/QuillonLib.h"
#include "support/store/Defaults.h"

#include <utility>

namespace {

constexpr int kStorePage = 5;
constexpr int kMacUpdatePage = 6;

}  // namespace

PXRatingWindowController::PXRatingWindowController()
    : PXRatingWindowController(
          ApplicationInfo::value,
          {[](int choice) { QuillonLib::shared().openURL(choice); },
           [](const QString& text) { QuillonLib::shared().sendSupportRequestMail(text); }}) {}

PXRatingWindowController::PXRatingWindowController(PageLookup page, Actions actions)
    : m_page(std::move(page)), m_actions(std::move(actions)) {}

void PXRatingWindowController::setIntroText(const QString& text) {
    m_introText = text;
    Q_EMIT introTextChanged();
}

void PXRatingWindowController::show(View view) {
    m_view = view;
    Q_EMIT viewChanged();
}

PXRatingWindowController::ReviewButton PXRatingWindowController::reviewButton(
    const char* pageKey, const char* otherPageKey, const char* otherTitle, const QString& icon,
    const QString& otherIcon) const {
    if (!m_page(pageKey).isEmpty()) return {.title = {}, .icon = icon, .isEnabled = true};
    if (!m_page(otherPageKey).isEmpty())
        return {.title = text::localized(otherTitle), .icon = otherIcon, .isEnabled = true};
    return {.title = {}, .icon = icon, .isEnabled = false};
}

PXRatingWindowController::ReviewButton PXRatingWindowController::appStoreButton() const {
    // The blanks reserve space for the icon.
    return reviewButton("StoreProductPage", "AlternativetoProductPage",
                        QT_TRANSLATE_NOOP("Ravelin", "    Rate on AlternativeTo"), "icon-appstore",
                        "icon-alternativeto");
}

PXRatingWindowController::ReviewButton PXRatingWindowController::macUpdateButton() const {
    return reviewButton("MacupdateProductPage", "FilehorseProductPage",
                        QT_TRANSLATE_NOOP("Ravelin", "    Rate on FileHorse"), "icon-macupdate",
                        "icon-filehorse");
}

void PXRatingWindowController::happyClicked() {
    show(View::Happy);
}

void PXRatingWindowController::problemsClicked() {
    show(View::Angry);
}

void PXRatingWindowController::notsureClicked() {
    closeClicked();
}

void PXRatingWindowController::notnowClicked() {
    closeClicked();
}

void PXRatingWindowController::closeClicked() {
    Q_EMIT closeRequested();
}

void PXRatingWindowController::rateappstoreClicked() {
    m_actions.openURL(kStorePage);
    closeClicked();
}

void PXRatingWindowController::ratemacupdateClicked() {
    m_actions.openURL(kMacUpdatePage);
    closeClicked();
}

void PXRatingWindowController::sendfeedbackClicked(const QString& text) {
    m_actions.sendSupportRequestMail(text);
    closeClicked();
}

void PXRatingWindowController::dontshowClicked() {
    closeClicked();
    const QString question =
        Texts::tr(
            "%1 asks for your feedback only rarely and at maximum only once per app-version. Are you sure you want to turn this off completely?")
            .arg(ApplicationInfo::name());
    const long answer =
        alert(Texts::tr("Confirmation"), question, AlertButton::cancelling(Texts::tr("Cancel")),
              Texts::tr("Turn off feedback dialog"));
    if (answer == kAlertSecondButton) setDefaultInt(kDontAskAgainKey, 1);
}

void PXRatingWindowController::windowWillClose() {
    if (const auto block = std::exchange(m_closeBlock, nullptr)) block();
}

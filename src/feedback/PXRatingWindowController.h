#pragma once

#include <QObject>
#include <QString>

#include <functional>

/// The state and the actions of the rating window, which only shows them. It first asks for the user's mood,
/// then offers review pages or a mail to support. Main thread only.
class PXRatingWindowController : public QObject {
    Q_OBJECT

public:
    static constexpr QLatin1StringView kDontAskAgainKey{"quillonlib_dontaskagain"};

    enum class View { Initial, Happy, Angry };

    struct ReviewButton {
        QString title;  ///< Empty: the title in the interface file.
        QString icon;   ///< Name of a symbolic icon.
        bool isEnabled = true;
    };

    /// Returns an address or text of the application's information file; empty: none.
    using PageLookup = std::function<QString(const char* key)>;
    /// What the buttons open: one of the vendor's pages by its number, and a mail to support.
    struct Actions {
        std::function<void(int choice)> openURL;
        std::function<void(const QString& text)> sendSupportRequestMail;
    };

    /// Uses the application's own pages and mails.
    PXRatingWindowController();
    PXRatingWindowController(PageLookup page, Actions actions);

    View view() const { return m_view; }
    /// The text above the first question.
    const QString& introText() const { return m_introText; }
    void setIntroText(const QString& text);

    /// Disabled if the application has no such page.
    ReviewButton appStoreButton() const;
    ReviewButton macUpdateButton() const;

    /// Sets the block that is called once, when the window closes.
    void setCloseBlock(std::function<void()> block) { m_closeBlock = std::move(block); }

    void happyClicked();
    void problemsClicked();
    void notsureClicked();
    void notnowClicked();
    void closeClicked();
    void rateappstoreClicked();
    void ratemacupdateClicked();
    void sendfeedbackClicked(const QString& text);
    /// Closes the window, then asks the user to confirm that they are never asked again.
    void dontshowClicked();

    /// To be called by the window when it closes for any reason.
    void windowWillClose();

Q_SIGNALS:
    void viewChanged();
    void introTextChanged();
    void closeRequested();

private:
    void show(View view);
    ReviewButton reviewButton(const char* pageKey, const char* otherPageKey, const char* otherTitle,
                              const QString& icon, const QString& otherIcon) const;

    const PageLookup m_page;
    const Actions m_actions;
    View m_view = View::Initial;
    QString m_introText;
    std::function<void()> m_closeBlock;
};

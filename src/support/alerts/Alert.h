#pragma once

#include "support/alerts/AlertPresenter.h"

/// Functions that show an alert through the presenter, log the question and the answer at level 3, and return
/// the answer: 1000, 1001 or 1002 for the first, second or third button. Main thread only; all but the
/// non-modal ones block until the user answers.
///
/// A button with an empty title is not added. Only the first three of a list of buttons are used.

long alert_customicon(const QString& title, const QString& message, const AlertButton& defaultButton,
                      const AlertButton& alternate, const AlertButton& other, const QString& icon);
long alert(const QString& title, const QString& message, const AlertButton& defaultButton,
           const AlertButton& alternate = QString(), const AlertButton& other = QString());
/// The alert as it is described, with any number of buttons: 1000 is the answer for the first.
long alert_described(const Alert& description);
/// With the application's name as the title.
long alert_apptitled(const QString& message, const AlertButton& defaultButton,
                     const AlertButton& alternate = QString(), const AlertButton& other = QString());
/// The same over a given window, for a result of that window's panel: no window is active while a panel
/// closes.
long alert_apptitled_over(AlertWindow window, const QString& message, const AlertButton& button);

long alert_input(const QString& prompt, const QStringList& buttons, QString& text);
long alert_inputsecure(const QString& prompt, const QStringList& buttons, QString& text);
long alert_checkbox(const QString& title, const QString& message, const QStringList& buttons,
                    const QString& checkboxTitle, bool& state);
/// `color` is "#rrggbb" or "#aarrggbb".
long alert_colorwell(const QString& prompt, const QStringList& buttons, QString& color);
long alert_inputtext(const QString& prompt, const QStringList& buttons, QString& text);
long alert_outputtext(const QString& prompt, const QString& text, const QStringList& buttons);
long alert_selection_popup(const QString& prompt, const QStringList& buttons, const QStringList& titles,
                           qsizetype& index);
/// Titles of more than 150 characters are shortened to their first and last 70.
long alert_selection_matrix(const QString& prompt, const QStringList& buttons, const QStringList& titles,
                            qsizetype& index);

void alert_nonmodal(const QString& title, const QString& message, const QString& button);
void alert_nonmodal_customicon(const QString& title, const QString& message, const QString& button,
                               const QString& icon);
void alert_nonmodal_customicon_block(const QString& title, const QString& message, const QString& button,
                                     const QString& icon, const std::function<void()>& block);
void alert_nonmodal_checkbox(const QString& title, const QString& message, const QString& button,
                             const QString& checkboxTitle, const std::function<void(bool)>& block);

#pragma once

#include "support/alerts/AlertPresenter.h"
#include "ui/look/FocusFrame.h"

#include <QIcon>
#include <QTextEdit>
#include <QVariant>
#include <QWidget>

#include <functional>

class QCheckBox;

/// The parts of alert dialogs and panels. Sizes are in device-independent pixels. Main thread only.

/// The control between message and buttons.
struct AlertAccessory {
    QWidget* widget = nullptr;  ///< Owned by its parent; null: the alert has none.
    QWidget* focus = nullptr;   ///< The widget with the initial keyboard focus; null: the default button.
    std::function<QVariant()> value;  ///< The user's input. Valid as long as the widget.
};

/// `width` is the available width: longer titles are wrapped.
AlertAccessory makeAlertAccessory(const Alert& alert, int width, QWidget* parent);

/// The icon of an alert: a file of the resources ("ok.png"), one of the symbolic icons, or the application's
/// icon.
QIcon alertIcon(const QString& name);

/// The text for buttons, boxes and labels, in which a single '&' would mark a mnemonic.
QString withoutMnemonics(QString text);

/// A check box whose title is wrapped if it is wider than `width`.
QCheckBox* makeAlertCheckBox(const QString& title, int width, QWidget* parent);

/// The height of a plain text at the width `width`.
int alertTextHeight(const QString& text, const QFont& font, int width);

/// The plain text of an alert: long words are broken (paths have no blanks), the user can select and copy it,
/// and it scrolls if it is higher than allowed.
class AlertText : public FocusFramed<QTextEdit> {
    Q_OBJECT

public:
    AlertText(const QString& text, const QFont& font, QWidget* parent);

    /// The width of the longest line without wrapping.
    int naturalWidth() const;
    int heightAt(int width) const;
    void setSize(int width, int height);
};

/// An icon that follows the palette and the resolution of the screen.
class AlertIcon : public QWidget {
    Q_OBJECT

public:
    static constexpr int kSize = 64;

    AlertIcon(const QString& name, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QIcon m_icon;
};

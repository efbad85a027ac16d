#pragma once

#include "support/alerts/AlertPresenter.h"

#include <QIcon>
#include <QTextEdit>
#include <QVariant>
#include <QWidget>

#include <functional>

class QCheckBox;

/// What dialogs and panels of alerts are made of. Sizes are in device-independent pixels.

/// The control between message and buttons.
struct AlertAccessory {
    QWidget* widget = nullptr;        ///< Owned by its parent; null: the alert has none.
    QWidget* focus = nullptr;         ///< What has the keyboard first; null: the default button.
    std::function<QVariant()> value;  ///< What the user made of it. Valid as long as the widget.
};

/// `width` is what the alert has for it: longer titles are broken into lines.
AlertAccessory makeAlertAccessory(const Alert& alert, int width, QWidget* parent);

/// The icon of an alert: of the resources ("ok.png"), one of the symbolic icons, or the application's.
QIcon alertIcon(const QString& name);

/// The text as buttons, boxes and labels take it, in which a single '&' would mark a mnemonic.
QString withoutMnemonics(QString text);

/// A check box whose title is broken into lines where it is wider than `width`.
QCheckBox* makeAlertCheckBox(const QString& title, int width, QWidget* parent);

/// The height of a plain text that is laid out `width` wide.
int alertTextHeight(const QString& text, const QFont& font, int width);

/// Plain text of an alert: words are broken where they do not fit (paths have no blanks), the user selects
/// and copies, and it scrolls where it is higher than it may be.
class AlertText : public QTextEdit {
    Q_OBJECT

public:
    AlertText(const QString& text, const QFont& font, QWidget* parent);

    /// The width of the longest line, unbroken.
    int naturalWidth() const;
    int heightAt(int width) const;
    void setSize(int width, int height);
};

/// An icon that keeps to the palette and to the screen's resolution.
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

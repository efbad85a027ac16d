#pragma once

#include <QList>
#include <QObject>
#include <QStringList>

class QComboBox;
class QSpinBox;
class QWidget;

/// Joins controls to integer settings. An interface file says by dynamic properties what a control is about:
///
///     settingKey             the setting
///     settingInverted        check box: checked stands for 0
///     settingValue           button inside a plain widget with a settingKey: the word of the value that
///                            choosing it stores
///     settingShownElsewhere  someone else reads and writes it; here its settings (divided by commas) are
///                            only restored
///     settingNeeds           any widget: disabled while this setting is 0, or with "Key=word,word" while it
///                            is none of these
///
/// What is behind the items of a pop-up is their user data; without that, the values that the setting allows,
/// in order; else their positions. Values are written at once, and only when the user did something; whoever
/// else changes one, the control follows. A value that a control does not offer is shown as such and stays
/// until the user chooses. Main thread only.
class SettingsBinder : public QObject {
    Q_OBJECT

public:
    explicit SettingsBinder(QObject* parent = nullptr);

    /// Joins every control below `root`, which lives as long as this.
    void bind(QWidget* root);
    /// Shows what the settings hold now.
    void refresh();
    /// Forgets what is stored for the controls below `page`.
    void restoreDefaults(const QWidget* page);

    /// The settings that a control is about; empty for any other widget.
    static QStringList keysOf(const QWidget& control);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void join(QWidget* control);
    void show(QWidget* control);
    void showNeeds();
    void showChanged(const QString& key);
    void store(QWidget* control, qint64 value);

    QList<QWidget*> m_controls;
    QList<QWidget*> m_needing;
    bool m_isShowing = false;
};

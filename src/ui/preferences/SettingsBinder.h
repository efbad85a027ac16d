#pragma once

#include <QList>
#include <QObject>
#include <QStringList>

class QComboBox;
class QSpinBox;
class QWidget;

/// Binds controls to integer settings. Dynamic properties in the interface files name the setting of a
/// control:
///
///     settingKey             the setting
///     settingInverted        check box: checked means 0
///     settingValue           button inside a plain widget with a settingKey: the word of the value that the
///                            button stores
///     settingShownElsewhere  another object reads and writes the setting; the binder only restores the
///                            defaults of these settings (separated by commas)
///     settingNeeds           any widget: disabled while this setting is 0, or with "Key=word,word" while it
///                            has none of these values
///
/// The value of a pop-up's item is its user data; without that, the allowed values of the setting in order;
/// else the item's index. Values are written at once, and only for input of the user; when another component
/// changes a setting, the control follows. A value that a control does not offer is displayed and stays until
/// the user chooses another one. Main thread only.
class SettingsBinder : public QObject {
    Q_OBJECT

public:
    explicit SettingsBinder(QObject* parent = nullptr);

    /// Binds every control below `root`, which must outlive this object.
    void bind(QWidget* root);
    /// Shows the current settings.
    void refresh();
    /// Deletes the stored values of the settings below `page`.
    void restoreDefaults(const QWidget* page);

    /// The keys of the settings of a control; empty for any other widget.
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

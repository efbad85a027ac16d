#include "ui/preferences/SettingsBinder.h"

#include "settings/Changes.h"
#include "settings/SettingsTable.h"
#include "support/store/Defaults.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QSpinBox>

#include <algorithm>
#include <limits>

namespace {

constexpr char kKey[] = "settingKey";
constexpr char kValue[] = "settingValue";
constexpr char kNeeds[] = "settingNeeds";

bool isInverted(const QWidget& control) {
    return control.property("settingInverted").toBool();
}

/// The first setting of a control.
const settings::Row& rowOf(const QWidget& control) {
    const QString key = SettingsBinder::keysOf(control).first();
    const settings::Row* row = settings::find(key);
    if (!row) qFatal("There is no setting %s.", qPrintable(key));
    return *row;
}

/// The stored value; for a boolean, its first or second value.
qint64 numberOf(const settings::Row& row) {
    const qint64 number = defaultInt(row.key);
    return row.type == settings::Type::Boolean && number != 0 ? 1 : number;
}

bool isChoice(const QComboBox& box, int index) {
    return (box.model()->flags(box.model()->index(index, 0)) & Qt::ItemIsEnabled) != 0;
}

/// Assigns the allowed values to the items of `box`, in order.
void giveValues(QComboBox& box, std::span<const settings::Choice> choices) {
    for (int i = 0; i < box.count() && !choices.empty(); ++i) {
        if (!isChoice(box, i) || box.itemData(i).isValid()) continue;
        box.setItemData(i, choices.front().number);
        choices = choices.subspan(1);
    }
}

qint64 valueOfItem(const QComboBox& box, int index) {
    const QVariant data = box.itemData(index);
    return data.isValid() ? data.toLongLong() : index;
}

/// -1: none. A separator cannot be selected and has no value.
int itemOfValue(const QComboBox& box, qint64 value) {
    for (int i = 0; i < box.count(); ++i) {
        if (isChoice(box, i) && valueOfItem(box, i) == value) return i;
    }
    return -1;
}

void showItem(QComboBox& box, qint64 value) {
    const int item = itemOfValue(box, value);
    box.setPlaceholderText(item < 0 ? SettingsBinder::tr("Other (%1)").arg(value) : QString());
    box.setCurrentIndex(item);
}

void showNumber(QSpinBox& box, qint64 value) {
    using Limits = std::numeric_limits<int>;
    const int number = static_cast<int>(std::clamp<qint64>(value, Limits::min(), Limits::max()));
    if (box.value() == number) return;  // The user may be typing it.
    box.setRange(std::min(box.minimum(), number), std::max(box.maximum(), number));
    box.setValue(number);
}

/// The choice of a button; null: the interface file has no value for it.
const settings::Choice* choiceOf(const QAbstractButton& button, const settings::Row& row) {
    return row.choices.find(button.property(kValue).toString());
}

/// Checks the button of the value, or none.
void showChoice(QButtonGroup& group, const settings::Row& row, qint64 value) {
    group.setExclusive(false);
    const QList<QAbstractButton*> buttons = group.buttons();
    for (QAbstractButton* button : buttons)
        button->setChecked(choiceOf(*button, row) == row.choices.find(value));
    group.setExclusive(true);
}

QButtonGroup* groupOf(const QWidget& control) {
    return control.findChild<QButtonGroup*>(QString(), Qt::FindDirectChildrenOnly);
}

bool isMet(const QString& need) {
    const QStringList parts = need.split(u'=');
    const qint64 value = defaultInt(parts.first());
    if (parts.size() < 2) return value != 0;
    const settings::Row* row = settings::find(parts.first());
    const settings::Choice* choice = row ? row->choices.find(value) : nullptr;
    return choice && parts[1].split(u',').contains(choice->word);
}

}  // namespace

SettingsBinder::SettingsBinder(QObject* parent) : QObject(parent) {
    connect(&settings::Changes::shared(), &settings::Changes::changed, this, &SettingsBinder::showChanged);
}

QStringList SettingsBinder::keysOf(const QWidget& control) {
    return control.property(kKey).toString().split(u',', Qt::SkipEmptyParts);
}

void SettingsBinder::bind(QWidget* root) {
    const QList<QWidget*> widgets = root->findChildren<QWidget*>();
    for (QWidget* widget : widgets) {
        if (widget->property(kNeeds).isValid()) m_needing.append(widget);
        if (keysOf(*widget).isEmpty()) continue;
        m_controls.append(widget);
        join(widget);
    }
}

void SettingsBinder::join(QWidget* control) {
    if (qobject_cast<QComboBox*>(control) || qobject_cast<QSpinBox*>(control)) {
        control->setFocusPolicy(Qt::StrongFocus);
        control->installEventFilter(this);
    }
    if (control->property("settingShownElsewhere").toBool()) return;
    if (auto* check = qobject_cast<QCheckBox*>(control)) {
        connect(check, &QCheckBox::clicked, this,
                [=, this](bool checked) { store(check, checked != isInverted(*check) ? 1 : 0); });
    } else if (auto* box = qobject_cast<QComboBox*>(control)) {
        giveValues(*box, rowOf(*box).choices.list);
        connect(box, &QComboBox::activated, this,
                [=, this](int index) { store(box, valueOfItem(*box, index)); });
    } else if (auto* number = qobject_cast<QSpinBox*>(control)) {
        connect(number, &QSpinBox::valueChanged, this, [=, this](int value) {
            if (!m_isShowing) store(number, value);
        });
    } else {
        auto* group = new QButtonGroup(control);
        const QList<QAbstractButton*> buttons = control->findChildren<QAbstractButton*>();
        for (QAbstractButton* button : buttons) {
            if (choiceOf(*button, rowOf(*control))) group->addButton(button);
        }
        connect(group, &QButtonGroup::buttonClicked, this, [=, this](const QAbstractButton* button) {
            store(control, choiceOf(*button, rowOf(*control))->number);
        });
    }
}

void SettingsBinder::refresh() {
    for (QWidget* control : std::as_const(m_controls))
        show(control);
    showNeeds();
}

void SettingsBinder::show(QWidget* control) {
    if (control->property("settingShownElsewhere").toBool()) return;
    const settings::Row& row = rowOf(*control);
    const qint64 value = numberOf(row);
    m_isShowing = true;
    if (auto* check = qobject_cast<QCheckBox*>(control))
        check->setChecked((value != 0) != isInverted(*check));
    else if (auto* box = qobject_cast<QComboBox*>(control))
        showItem(*box, value);
    else if (auto* number = qobject_cast<QSpinBox*>(control))
        showNumber(*number, value);
    else if (auto* group = groupOf(*control))
        showChoice(*group, row, value);
    m_isShowing = false;
}

void SettingsBinder::showNeeds() {
    for (QWidget* widget : std::as_const(m_needing))
        widget->setEnabled(isMet(widget->property(kNeeds).toString()));
}

void SettingsBinder::store(QWidget* control, qint64 value) {
    setDefaultInt(rowOf(*control).key, value);
    show(control);  // An override of this run has priority over the choice: show the effective value.
}

void SettingsBinder::showChanged(const QString& key) {
    for (QWidget* control : std::as_const(m_controls)) {
        if (keysOf(*control).contains(key)) show(control);
    }
    showNeeds();
}

void SettingsBinder::restoreDefaults(const QWidget* page) {
    QStringList restored;
    for (const QWidget* control : std::as_const(m_controls)) {
        if (page->isAncestorOf(control)) restored += keysOf(*control);
    }
    for (const QString& key : std::as_const(restored))
        setDefaultObject(key, QVariant());
    refresh();
}

// The wheel scrolls the page; it changes a control only if that has the focus.
bool SettingsBinder::eventFilter(QObject* watched, QEvent* event) {
    const auto* control = qobject_cast<QWidget*>(watched);
    if (event->type() != QEvent::Wheel || !control || control->hasFocus())
        return QObject::eventFilter(watched, event);
    event->ignore();
    return true;
}

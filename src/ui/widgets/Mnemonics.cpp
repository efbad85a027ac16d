#include "ui/widgets/Mnemonics.h"

#include <QAbstractButton>
#include <QKeySequence>
#include <QLabel>
#include <QMenuBar>

#include <algorithm>

namespace mnemonics {

namespace {

QString letterOf(const QString& text) {
    const QKeySequence sequence = QKeySequence::mnemonic(text);
    return sequence.isEmpty() ? QString() : QChar(sequence[0].key());
}

}  // namespace

QString takenBeside(const QWidget& widget) {
    QString taken;
    const QWidget* window = widget.window();
    const QList<QWidget*> all = window->findChildren<QWidget*>();
    for (const QWidget* each : all) {
        if (each == &widget || each->window() != window) continue;
        if (const auto* button = qobject_cast<const QAbstractButton*>(each))
            taken += letterOf(button->text());
        if (const auto* label = qobject_cast<const QLabel*>(each); label && label->buddy())
            taken += letterOf(label->text());
        if (!qobject_cast<const QMenuBar*>(each)) continue;
        const QList<QAction*> menus = each->actions();
        for (const QAction* menu : menus)
            taken += letterOf(menu->text());
    }
    return taken;
}

QString added(QString title, const QString& taken) {
    const auto isFree = [&](QChar letter) {
        const QChar::Script script = letter.script();
        const bool isOnKey = script == QChar::Script_Latin || script == QChar::Script_Greek ||
                             script == QChar::Script_Cyrillic;
        return letter.isLetter() && isOnKey && !taken.contains(letter.toUpper());
    };
    const auto found = std::ranges::find_if(title, isFree);
    const qsizetype position = found == title.end() ? -1 : found - title.begin();
    const qsizetype before = position < 0 ? 0 : title.first(position).count(u'&');
    title.replace(u'&', "&&");
    if (position >= 0) title.insert(position + before, u'&');
    return title;
}

}  // namespace mnemonics

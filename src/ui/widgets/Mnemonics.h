#pragma once

#include <QString>

class QWidget;

/// The letters that work with Alt in a window. Main thread only, except where noted.
namespace mnemonics {

/// The letters of the buttons, of the labels of other controls, and of the menu bar in the window of
/// `widget`, without those of `widget` itself; in capitals.
QString takenBeside(const QWidget& widget);

/// `title` with its first letter that is not `taken` as its mnemonic; without one if all are. An "&" of the
/// title stays a letter. Pure; any thread.
QString added(QString title, const QString& taken);

}  // namespace mnemonics

#pragma once

#include <QCoreApplication>

/// Translates texts for the user outside of QObject classes, which have their own tr(). `Texts::tr("The file
/// '%1' is gone.").arg(name)`: numbered placeholders, which a translation can reorder; `Texts::tr("%n
/// movie(s)", nullptr, count)` has plural forms. Mark texts in tables with QT_TRANSLATE_NOOP("Ravelin",
/// text), which lupdate finds only under this name, and pass them to text::localized() where they are shown.
/// Log lines and mails to support are not translated. Callable from any thread.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Ravelin)
};

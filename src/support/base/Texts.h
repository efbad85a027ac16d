#pragma once

#include <QCoreApplication>

/// Where texts for people are looked up for translation, outside of Qt's own classes, which have a tr() of
/// their own. `Texts::tr("The file '%1' is gone.").arg(name)`: placeholders are numbered, so a translation
/// can order them anew, and `Texts::tr("%n movie(s)", nullptr, count)` has the forms of the plural. A text
/// that stands in a table is marked with RAVELIN_TEXT there and looked up by text::localized() where it is
/// shown. Lines of the log and mails to support are not translated.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(Ravelin)
};

#define RAVELIN_TEXT(text) QT_TRANSLATE_NOOP("Ravelin", text)

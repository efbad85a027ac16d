#pragma once

#include "richtext/Words.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <optional>

namespace richtext {

struct Font {
    bool isMonospaced = false;
    int charset = 0;
    int codePage = 0;  ///< 0: derived from the character set.
};

/// The font table, by font number. Each instance is for one thread.
class FontTable {
public:
    void read(Meaning meaning, int parameter);
    /// Reads a piece of a font's name; a semicolon ends the name.
    void readText(QByteArrayView text);

    Font font(int number) const { return m_fonts.value(number); }

private:
    QHash<int, Font> m_fonts;
    int m_current = 0;
    QByteArray m_name;
};

/// The colour table, by index. Each instance is for one thread.
class ColorTable {
public:
    void read(Meaning meaning, int parameter);
    /// Reads text; each semicolon ends a colour.
    void readText(QByteArrayView text);

    /// 0xRRGGBB; null: the default text colour.
    std::optional<quint32> color(int index) const;

private:
    QList<std::optional<quint32>> m_colors;
    std::optional<quint32> m_current;
};

}  // namespace richtext

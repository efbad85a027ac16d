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
    int codePage = 0;  ///< 0: as the character set says.
};

/// The fonts that the text names by their numbers.
class FontTable {
public:
    void read(Meaning meaning, int parameter);
    /// A piece of a font's name, which a semicolon ends.
    void readText(QByteArrayView text);

    Font font(int number) const { return m_fonts.value(number); }

private:
    QHash<int, Font> m_fonts;
    int m_current = 0;
    QByteArray m_name;
};

/// The colours that the text names by their places.
class ColorTable {
public:
    void read(Meaning meaning, int parameter);
    /// Each semicolon ends a colour.
    void readText(QByteArrayView text);

    /// 0xRRGGBB; nothing: the colour that text has by itself.
    std::optional<quint32> color(int index) const;

private:
    QList<std::optional<quint32>> m_colors;
    std::optional<quint32> m_current;
};

}  // namespace richtext

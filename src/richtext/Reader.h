#pragma once

#include "richtext/CodePage.h"
#include "richtext/DocumentBuilder.h"
#include "richtext/Formatting.h"
#include "richtext/Tables.h"
#include "richtext/Tokenizer.h"

#include <optional>
#include <vector>

namespace richtext {

/// Where the text of a group goes.
enum class Destination : quint8 { Text, Skipped, FontTable, ColorTable, Instruction, Label };

/// Follows the tokens from group to group. Reads one document.
class Reader {
public:
    explicit Reader(QByteArrayView rtf) : m_tokens(rtf) {}

    std::optional<Document> read();

private:
    struct Group {
        Format format;
        Destination destination = Destination::Text;
        int fallbackLength = 1;   ///< How many characters for older readers follow one of Unicode.
        bool isOptional = false;  ///< Its first word, if it is not known, has the group passed over.
    };

    Group& group() { return m_groups.back(); }
    void readToken(const Token& token);
    void beginGroup();
    void endGroup();
    void readWord(const Token& token);
    void readTableWord(Meaning meaning, int parameter);
    void readSymbol(QByteArrayView symbol);
    void readBytes(QByteArrayView bytes);
    void readUnicode(int code);
    void readCharacter(char16_t character);
    void enter(Destination destination);
    void enterFieldResult();
    void endParagraph();
    void writeBytes();
    void write(QStringView text);
    Font font();
    int codePage();

    Tokenizer m_tokens;
    DocumentBuilder m_document;
    FontTable m_fonts;
    ColorTable m_colors;
    CodePages m_codePages;
    std::vector<Group> m_groups;    ///< Those that are open; never empty while reading.
    qsizetype m_groupsTooDeep = 0;  ///< That are open, too; what they hold is left out.
    bool m_isComplete = false;
    QByteArray m_bytes;     ///< Of text, not decoded yet: a character may have two of them.
    QString m_instruction;  ///< Of the field that was begun last.
    int m_fallback = 0;     ///< Characters to pass over, which stand for one that was read.
    int m_codePage = kWesternCodePage;
    int m_defaultFont = 0;
};

}  // namespace richtext

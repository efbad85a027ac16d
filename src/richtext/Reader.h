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

/// Parses the tokens of one document, group by group. Each instance is for one thread.
class Reader {
public:
    explicit Reader(QByteArrayView rtf) : m_tokens(rtf) {}

    std::optional<Document> read();

private:
    struct Group {
        Format format;
        Destination destination = Destination::Text;
        int fallbackLength = 1;   ///< Fallback characters after a Unicode character.
        bool isOptional = false;  ///< Skip the group if its first word is unknown.
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
    std::vector<Group> m_groups;    ///< The open groups; never empty while reading.
    qsizetype m_groupsTooDeep = 0;  ///< Number of open groups beyond the limit; their contents are skipped.
    bool m_isComplete = false;
    QByteArray m_bytes;     ///< Text bytes not decoded yet: a character may have two bytes.
    QString m_instruction;  ///< Instruction of the current field.
    int m_fallback = 0;     ///< Remaining fallback characters to skip.
    int m_codePage = kWesternCodePage;
    int m_defaultFont = 0;
};

}  // namespace richtext

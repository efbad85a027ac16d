#include "richtext/Words.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace richtext {

namespace {

struct Entry {
    std::string_view name;
    Word word;
};

constexpr auto kWords = std::to_array<Entry>({
    {"aftncn", {Meaning::Skipped}},
    {"aftnsep", {Meaning::Skipped}},
    {"aftnsepc", {Meaning::Skipped}},
    {"annotation", {Meaning::Skipped}},
    {"ansi", {Meaning::CodePage, 1252}},
    {"ansicpg", {Meaning::CodePage}},
    {"b", {Meaning::Bold}},
    {"background", {Meaning::Skipped}},
    {"blue", {Meaning::Blue}},
    {"bullet", {Meaning::Character, 0x2022}},
    {"cell", {Meaning::Character, u'\t'}},
    {"cf", {Meaning::Color}},
    {"colorschememapping", {Meaning::Skipped}},
    {"colortbl", {Meaning::ColorTable}},
    {"cpg", {Meaning::FontCodePage}},
    {"datastore", {Meaning::Skipped}},
    {"deff", {Meaning::DefaultFont}},
    {"do", {Meaning::Skipped}},
    {"emdash", {Meaning::Character, 0x2014}},
    {"emspace", {Meaning::Character, 0x2003}},
    {"endash", {Meaning::Character, 0x2013}},
    {"enspace", {Meaning::Character, 0x2002}},
    {"f", {Meaning::Font}},
    {"fcharset", {Meaning::FontCharset}},
    {"fi", {Meaning::FirstLineIndent}},
    {"field", {Meaning::Field}},
    {"filetbl", {Meaning::Skipped}},
    {"fldinst", {Meaning::FieldInstruction}},
    {"fldrslt", {Meaning::FieldResult}},
    {"fmodern", {Meaning::FontIsMonospaced}},
    {"fontemb", {Meaning::Skipped}},
    {"fonttbl", {Meaning::FontTable}},
    {"footer", {Meaning::Skipped}},
    {"footerf", {Meaning::Skipped}},
    {"footerl", {Meaning::Skipped}},
    {"footerr", {Meaning::Skipped}},
    {"footnote", {Meaning::Skipped}},
    {"fs", {Meaning::Size}},
    {"ftncn", {Meaning::Skipped}},
    {"ftnsep", {Meaning::Skipped}},
    {"ftnsepc", {Meaning::Skipped}},
    {"generator", {Meaning::Skipped}},
    {"green", {Meaning::Green}},
    {"header", {Meaning::Skipped}},
    {"headerf", {Meaning::Skipped}},
    {"headerl", {Meaning::Skipped}},
    {"headerr", {Meaning::Skipped}},
    {"i", {Meaning::Italic}},
    {"info", {Meaning::Skipped}},
    {"latentstyles", {Meaning::Skipped}},
    {"ldblquote", {Meaning::Character, 0x201C}},
    {"li", {Meaning::Indent}},
    {"lin", {Meaning::Indent}},
    {"line", {Meaning::Character, 0x2028}},
    {"listoverridetable", {Meaning::Skipped}},
    {"listtable", {Meaning::Skipped}},
    {"listtext", {Meaning::Label}},
    {"lquote", {Meaning::Character, 0x2018}},
    {"ltrmark", {Meaning::Character, 0x200E}},
    {"mac", {Meaning::CodePage, 10000}},
    {"nestcell", {Meaning::Character, u'\t'}},
    {"nestrow", {Meaning::EndOfParagraph}},
    {"nonesttables", {Meaning::Skipped}},
    {"nonshppict", {Meaning::Skipped}},
    {"object", {Meaning::Skipped}},
    {"page", {Meaning::EndOfParagraph}},
    {"par", {Meaning::EndOfParagraph}},
    {"pard", {Meaning::PlainParagraph}},
    {"pc", {Meaning::CodePage, 437}},
    {"pca", {Meaning::CodePage, 850}},
    {"pict", {Meaning::Skipped}},
    {"plain", {Meaning::PlainText}},
    {"pn", {Meaning::Skipped}},
    {"pntext", {Meaning::Label}},
    {"pntxta", {Meaning::Skipped}},
    {"pntxtb", {Meaning::Skipped}},
    {"private", {Meaning::Skipped}},
    {"qc", {Meaning::AlignCenter}},
    {"qj", {Meaning::AlignJustified}},
    {"ql", {Meaning::AlignLeft}},
    {"qmspace", {Meaning::Character, 0x2005}},
    {"qr", {Meaning::AlignRight}},
    {"rdblquote", {Meaning::Character, 0x201D}},
    {"red", {Meaning::Red}},
    {"revtbl", {Meaning::Skipped}},
    {"row", {Meaning::EndOfParagraph}},
    {"rquote", {Meaning::Character, 0x2019}},
    {"rsidtbl", {Meaning::Skipped}},
    {"rtlmark", {Meaning::Character, 0x200F}},
    {"sa", {Meaning::SpaceAfter}},
    {"sb", {Meaning::SpaceBefore}},
    {"sect", {Meaning::EndOfParagraph}},
    {"shpinst", {Meaning::Skipped}},
    {"stylesheet", {Meaning::Skipped}},
    {"tab", {Meaning::Character, u'\t'}},
    {"tc", {Meaning::Skipped}},
    {"tcn", {Meaning::Skipped}},
    {"template", {Meaning::Skipped}},
    {"themedata", {Meaning::Skipped}},
    {"u", {Meaning::Unicode}},
    {"uc", {Meaning::FallbackLength}},
    {"ud", {Meaning::Skipped}},
    {"ul", {Meaning::Underline}},
    {"uld", {Meaning::Underline}},
    {"uldb", {Meaning::Underline}},
    {"ulnone", {Meaning::NoUnderline}},
    {"ulth", {Meaning::Underline}},
    {"ulw", {Meaning::Underline}},
    {"v", {Meaning::Hidden}},
    {"xe", {Meaning::Skipped}},
    {"xmlnstbl", {Meaning::Skipped}},
    {"zwj", {Meaning::Character, 0x200D}},
    {"zwnj", {Meaning::Character, 0x200C}},
});

static_assert(std::ranges::is_sorted(kWords, {}, &Entry::name));

}  // namespace

Word wordNamed(QByteArrayView name) {
    const std::string_view wanted(name.data(), static_cast<size_t>(name.size()));
    const auto* const found = std::ranges::lower_bound(kWords, wanted, {}, &Entry::name);
    return found != kWords.end() && found->name == wanted ? found->word : Word{};
}

}  // namespace richtext

#include "richtext/Formatting.h"

#include <algorithm>

namespace richtext {

namespace {

// Limits of lengths on a page, in twips, and of sizes, in half points.
constexpr int kWidest = 7200;
constexpr int kHighestGap = 1440;
constexpr int kSmallest = 8;
constexpr int kLargest = 144;

const TextStyle kPlain;

}  // namespace

void apply(Meaning meaning, const Token& word, const ColorTable& colors, Format& format) {
    TextStyle& text = format.text;
    ParagraphStyle& paragraph = format.paragraph;
    const int number = word.parameter;
    const int link = text.link;
    const bool isOn = !word.hasParameter || number != 0;
    switch (meaning) {
        case Meaning::Font:
            format.font = number;
            break;
        case Meaning::PlainText:
            text = kPlain;
            text.link = link;
            format.font = -1;
            format.isHidden = false;
            break;
        case Meaning::Bold:
            text.isBold = isOn;
            break;
        case Meaning::Italic:
            text.isItalic = isOn;
            break;
        case Meaning::Underline:
            text.isUnderlined = isOn;
            break;
        case Meaning::NoUnderline:
            text.isUnderlined = false;
            break;
        case Meaning::Hidden:
            format.isHidden = isOn;
            break;
        case Meaning::Size:
            text.halfPoints = word.hasParameter ? std::clamp(number, kSmallest, kLargest) : kPlain.halfPoints;
            break;
        case Meaning::Color:
            text.color = colors.color(number);
            break;
        case Meaning::PlainParagraph:
            paragraph = {};
            break;
        case Meaning::AlignLeft:
            paragraph.alignment = Alignment::Left;
            break;
        case Meaning::AlignCenter:
            paragraph.alignment = Alignment::Center;
            break;
        case Meaning::AlignRight:
            paragraph.alignment = Alignment::Right;
            break;
        case Meaning::AlignJustified:
            paragraph.alignment = Alignment::Justified;
            break;
        case Meaning::Indent:
            paragraph.indent = std::clamp(number, 0, kWidest);
            break;
        case Meaning::FirstLineIndent:
            paragraph.firstLineIndent = std::clamp(number, -kWidest, kWidest);
            break;
        case Meaning::SpaceBefore:
            paragraph.spaceBefore = std::clamp(number, 0, kHighestGap);
            break;
        case Meaning::SpaceAfter:
            paragraph.spaceAfter = std::clamp(number, 0, kHighestGap);
            break;
        default:
            break;
    }
}

}  // namespace richtext

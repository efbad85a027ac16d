#include "richtext/CodePage.h"

#include <algorithm>
#include <array>

namespace richtext {

namespace {

struct CharsetEntry {
    int charset;
    int codePage;
};

constexpr auto kCharsets = std::to_array<CharsetEntry>({
    {2, kSymbolCodePage}, {77, 10000}, {78, 932},   {79, 949},   {80, 936},   {81, 950},   {128, 932},
    {129, 949},           {134, 936},  {136, 950},  {161, 1253}, {162, 1254}, {163, 1258}, {177, 1255},
    {178, 1256},          {186, 1257}, {204, 1251}, {222, 874},  {238, 1250}, {254, 437},  {255, 850},
});

struct NameEntry {
    int codePage;
    const char* name;
};

constexpr auto kNames = std::to_array<NameEntry>({
    {437, "IBM437"},        {850, "IBM850"},        {852, "IBM852"},
    {866, "IBM866"},        {874, "windows-874"},   {932, "windows-932"},
    {936, "GBK"},           {949, "windows-949"},   {950, "Big5"},
    {1250, "windows-1250"}, {1251, "windows-1251"}, {1252, "windows-1252"},
    {1253, "windows-1253"}, {1254, "windows-1254"}, {1255, "windows-1255"},
    {1256, "windows-1256"}, {1257, "windows-1257"}, {1258, "windows-1258"},
    {10000, "macintosh"},   {10006, "x-mac-greek"}, {10007, "x-mac-cyrillic"},
    {20866, "KOI8-R"},      {54936, "gb18030"},     {65001, "UTF-8"},
});

QString decodedSigns(QByteArrayView bytes) {
    QString signs = QString::fromLatin1(bytes);
    signs.replace(QChar(0xB7), QChar(0x2022));
    signs.replace(QChar(0xA7), QChar(0x25AA));
    return signs;
}

}  // namespace

int codePageOfCharset(int charset, int ofDocument) {
    const auto* const found = std::ranges::find(kCharsets, charset, &CharsetEntry::charset);
    return found == kCharsets.end() ? ofDocument : found->codePage;
}

QString CodePages::decode(QByteArrayView bytes, int codePage) {
    // All of these code pages are supersets of ASCII.
    if (std::ranges::all_of(bytes, [](char byte) { return static_cast<signed char>(byte) >= 0; }))
        return QString::fromLatin1(bytes);
    if (codePage == kSymbolCodePage) return decodedSigns(bytes);
    const auto* known = std::ranges::find(kNames, codePage, &NameEntry::codePage);
    if (known == kNames.end()) known = std::ranges::find(kNames, kWesternCodePage, &NameEntry::codePage);
    auto decoder = m_decoders.find(known->codePage);
    if (decoder == m_decoders.end())
        decoder = m_decoders.emplace(known->codePage, QStringDecoder(known->name)).first;
    if (!decoder->second.isValid()) return QString::fromLatin1(bytes);
    decoder->second.resetState();  // Drops half a character at the end of the previous text.
    return decoder->second.decode(bytes);
}

}  // namespace richtext

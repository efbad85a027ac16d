#include "fakes/Table.h"
#include "media/SubtitleFile.h"
#include "media/Summary.h"

#include <QStringEncoder>

namespace {

const QByteArray kSubRip =
    "1\n00:00:01,000 --> 00:00:02,000\nOne\n\n2\n00:00:03,000 --> 00:00:04,000\nTwo\nlines\n\n"
    "3\n00:00:05,000 --> 00:00:06,000\n<i>Three</i>\n";
const QByteArray kAss =
    "[Script Info]\nScriptType: v4.00+\n[Events]\nFormat: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, "
    "Effect, Text\nDialogue: 0,0:00:05.00,0:00:06.90,Default,,0,0,0,,Five, with comma\n"
    "Comment: 0,0:00:00.00,0:00:00.90,Default,,0,0,0,,No\n"
    "Dialogue: 0,0:00:01.00,0:00:02.90,Default,,0,0,0,,{\\an8}\\N{\\i1}\n";

QByteArray replaced(QByteArray text, const char* before, const char* after) {
    return text.replace(before, after);
}

QByteArray utf16(const QByteArray& text, QStringConverter::Encoding encoding) {
    QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
    return encoder(QString::fromUtf8(text));
}

}  // namespace

/// The expected events are those that the tool finds in the same files.
class SubtitleFileTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void events_data() {
        const char* const all = "1.00-2.00 3.00-4.00 5.00-6.00";
        const auto two = [](const char* text) { return replaced(kSubRip, "Two\nlines", text); };
        addRows<QByteArray, QByteArray>({
            {"SubRip", kSubRip, all},
            {"CR LF", replaced(kSubRip, "\n", "\r\n"), all},
            {"CR", replaced(kSubRip, "\n", "\r"), all},
            {"byte-order mark", "\xEF\xBB\xBF" + kSubRip, all},
            {"UTF-16 LE", utf16(two("Zwölf 𝄞"), QStringConverter::Utf16LE), all},
            {"UTF-16 BE", utf16(kSubRip, QStringConverter::Utf16BE), all},
            {"no line end at the end", kSubRip.trimmed(), all},
            {"an empty line inside", two("Two\n\nlines"), all},
            {"no numbers later", replaced(replaced(kSubRip, "\n2\n", "\n"), "\n3\n", "\n"), all},
            {"no empty lines", replaced(kSubRip, "\n\n", "\n"), all},
            {"dots", replaced(kSubRip, ",", "."), all},
            {"out of order", replaced(replaced(kSubRip, "00:00:01", "00:00:09"), "00:00:02,", "00:00:10,"),
             "3.00-4.00 5.00-6.00 9.00-10.00"},
            {"overlapping", replaced(kSubRip, "00:00:02,", "00:00:08,"), "1.00-8.00 3.00-4.00 5.00-6.00"},
            {"the same start", replaced(kSubRip, "00:00:03,", "00:00:01,"), "1.00-2.00 1.00-4.00 5.00-6.00"},
            {"ends before it starts", replaced(kSubRip, "00:00:04,000", "00:00:02,500"),
             "1.00-2.00 3.00-5.00 5.00-6.00"},
            {"a repetition", kSubRip + "\n4\n00:00:05,000 --> 00:00:06,000\n<i>Three</i>\n", all},
            {"no text", two(""), "1.00-2.00 5.00-6.00"},
            {"a number as text", two("2001"), all},
            {"nothing visible", two("{\\an8}<i> </i>&nbsp;\xC2\xA0"), "1.00-2.00 (3.00-4.00) 5.00-6.00"},
            {"signs of markup", two("<3 {"), all},
            {"Latin 1", two("\xC4\xDC"), all},
            {"coordinates", replaced(kSubRip, "00:00:02,000", "00:00:02,000 X1:10 X2:20 Y1:1 Y2:2"), all},
            {"SubRip without the first number", kSubRip.mid(2), "none"},
            {"a zero byte", two(QByteArray("T\0wo", 4).constData()) + '\0', "none"},
            {"ASS", kAss, "(1.00-2.90) 5.00-6.90"},
            {"MicroDVD", "{0}{24}One\n{48}{72}{y:i}\n", "0.00-1.00 (2.00-3.00)"},
            {"MicroDVD with a rate", "{1}{1}25\r\n{25}{50}One|Two\r\n{75}{}open\r\n{100}{125}last\r\n",
             "1.00-2.00 3.00-4.00 4.00-5.00"},
            {"SAMI",
             "<SAMI><HEAD><STYLE><!-- x --></STYLE></HEAD><BODY>\n<SYNC Start=1000><P Class=ENCC>\nOne<br>two\n"
             "<SYNC Start=\"1900\"><P Class=ENCC>&nbsp;\n<sync start=2000><P>More\n<SYNC Start=3000><P>&nbsp;</BODY></SAMI>",
             "1.00-1.90 (1.90-2.00) 2.00-3.00 (3.00-3.00)"},
            {"SubViewer",
             "[INFORMATION]\n[TITLE]x\n[SUBTITLE]\n00:00:01.00,00:00:02.50\nOne[br]two\n\n00:00:03.00,00:00:04.00\nThree\n",
             "1.00-2.50 3.00-4.00"},
            {"WebVTT",
             "WEBVTT\n\nNOTE x\n\n1\n00:01.000 --> 00:02.000 align:start\nOne\n\n00:00:03.000 --> 00:00:04.000\nTwo\n",
             "1.00-2.00 3.00-4.00"},
            {"something else", "Once upon a time\n", "none"},
            {"empty", "", "none"},
        });
    }
    void events() {
        const auto [text, expected] = row<QByteArray, QByteArray>();
        const BytesInFile file(text);
        const auto lines = media::readSubtitleFile(file.path());
        QStringList found;
        for (const media::Line& line : lines.value_or(std::vector<media::Line>())) {
            const QString times = QString("%1-%2").arg(line.start, 0, 'f', 2).arg(line.end(), 0, 'f', 2);
            found += line.visible ? times : '(' + times + ')';
        }
        QCOMPARE(lines ? found.join(' ') : "none", QString(expected));
    }
};

QTEST_APPLESS_MAIN(SubtitleFileTest)
#include "tst_SubtitleFile.moc"

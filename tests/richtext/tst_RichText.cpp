#include "fakes/Table.h"
#include "richtext/RichText.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace {

const QByteArray kHead =
    "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss Helvetica;}{\\f1\\fmodern C;}"
    "{\\f2\\fcharset204 A;}{\\f3\\fcharset128 M;}{\\f4\\fcharset2 S;}{\\f5\\fnil Menlo;}}"
    "{\\colortbl;\\red255\\green0\\blue16;\\red250\\green250\\blue250;}";

/// The contents of the body element; paragraphs without a style as plain <p>.
QString bodyOf(const QByteArray& content, const richtext::HtmlLook& look = {}) {
    const auto document = richtext::read(kHead + content + '}');
    if (!document) return "no rich text";
    QString html = richtext::toHtml(*document, look);
    html.remove(0, html.indexOf(u'>', html.indexOf("<body")) + 1);
    html.remove("</body></html>").remove("margin-top:0px;margin-bottom:0px;");
    return html.remove(" style=\"margin-top:0px;margin-bottom:0px\"");
}

QByteArray link(const QByteArray& address) {
    return "{\\field{\\*\\fldinst{HYPERLINK \"" + address + "\"}}{\\fldrslt x}}";
}

/// The fault in the document read from these bytes; empty: none.
QString faultIn(const QByteArray& bytes) {
    const auto document = richtext::read(bytes);
    if (!document) return u"not read"_s;
    const QString html = richtext::toHtml(*document, {.bodyPoints = 10, .background = 0x202020});
    if (html.size() > 200 + 64 * bytes.size()) return u"too long"_s;
    static const QStringList kSchemes{"http", "https", "mailto", "file", ""};
    QXmlStreamReader xml(html);
    while (!xml.atEnd()) {
        xml.readNext();
        for (const QChar c : xml.text()) {
            const bool isText = c == u'\t' || c.category() != QChar::Other_Control;
            if (!isText) return u"control character %1"_s.arg(c.unicode());
        }
        if (!xml.isStartElement() || xml.name() != u"a") continue;
        const QString address = xml.attributes().value("href").toString();
        if (!kSchemes.contains(QUrl(address).scheme())) return u"links to "_s + address;
    }
    return xml.errorString();
}

/// Inserts, repeats or removes a few pieces, or flips bits.
QByteArray mutated(QByteArray bytes, QRandomGenerator& random) {
    static const QByteArrayList kPieces =
        QByteArray(
            R"({|}|{\*\x |\'|\'e4|\'81|\u-10179?|\u-8704|\u0|\u-2|\u127|\u64976|\uc99999999999|\uc0|\bin99|\bin-1)"
            R"(|\bin4 \}{\|\fs999999999999|\f3|\f4|\b|\b0|\cf1|\cf-1|\li9999999|\li360|\fi-9999999|\par|\line |\plain)"
            R"(|\pard|\bullet\tab |{\listtext|{\fonttbl|{\colortbl|\red|;|\*|\|<&">|\ansicpg65001|\ansicpg932|)"
            "\xff|\xed\xa0\x80|" +
            link("http://e.example/?a&b") + "|" + link("javascript:x") + "|" + QByteArray(1, '\0'))
            .split('|');
    const auto any = [&random](qsizetype limit) { return limit > 0 ? random.bounded(limit) : 0; };
    for (auto changes = 1 + any(8); changes > 0; --changes) {
        const qsizetype at = 6 + any(bytes.size() - 6);  // Keeps the header.
        const QByteArray inserts[] = {bytes.mid(any(bytes.size()), any(200)), kPieces.at(any(kPieces.size())),
                                      kPieces.at(any(kPieces.size()))};
        const auto change = any(6);
        if (change < 3) bytes.insert(at, inserts[change]);
        if (change == 3) bytes.truncate(at);
        if (change == 4) bytes.remove(at, any(20));
        if (change == 5 && at < bytes.size()) bytes[at] = static_cast<char>(bytes.at(at) ^ (1 << any(8)));
    }
    return bytes;
}

}  // namespace

class RichTextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void html_data() {
        addRows<QByteArray, QString>(
            {{"paragraphs", "a\\par b\\par\\par c\\line d\\par",
              "<p>a</p><p>b</p><p style=\"-qt-paragraph-type:empty\"><br/></p><p>c<br/>d</p>"},
             {"ends of lines mean nothing, escaped ones end a paragraph", "a\r\nb\\\nc", "<p>ab</p><p>c</p>"},
             {"groups give back", "{\\b a{\\i\\b0 b}c}d", "<p><b>a</b><i>b</i><b>c</b>d</p>"},
             {"neighbours share tags", "\\ul a\\b b\\ulnone\\b0 c", "<p><u>a<b>b</b></u>c</p>"},
             {"plain and unknown words", "\\b\\i\\foo7 a\\plain b\\v hidden\\v0 c",
              "<p><i><b>a</b></i>bc</p>"},
             {"sizes beside the most frequent one", "\\fs40 a\\fs22 long\\par\\fs11 b",
              "<p><span style=\"font-size:20pt;\">a</span>long</p>"
              "<p><span style=\"font-size:5.5pt;\">b</span></p>"},
             {"colour", "\\cf1 a\\cf0 b\\cf9 c", "<p><span style=\"color:#ff0010;\">a</span>bc</p>"},
             {"fonts", "\\f1 a\\f5 b\\f0 c", "<p><span style=\"font-family:monospace;\">ab</span>c</p>"},
             {"places of paragraphs", "\\qc\\li720\\fi-360\\sb120\\sa60 a\\par\\pard\\qj\\fi-99 b",
              "<p align=\"center\" "
              "style=\"margin-top:8px;margin-bottom:4px;margin-left:48px;text-indent:-24px\">a</p>"
              "<p align=\"justify\">b</p>"},
             {"escaped", "<a href=\"x\">&\\{\\\\\\}", "<p>&lt;a href=&quot;x&quot;&gt;&amp;{\\}</p>"},
             {"signs", "\\lquote\\rdblquote\\emdash\\~\\_\\-\\bullet", "<p>‘”—\u00A0\u2011\u00AD•</p>"},
             {"code page", "\\'e4\\'80{\\f2\\'e4}\\'E4", "<p>ä€дä</p>"},
             {"two bytes a character", "{\\f3\\'82\\'a0\\'83A\\'83\\'5c}\\'e4", "<p>あアソä</p>"},
             {"half a character", "{\\f3\\'82{\\b\\'b1}\\'82\\'a0}", "<p><b>ｱ</b>あ</p>"},
             {"code page of the document", "\\ansicpg1251\\'e4\\mac\\'8a\\ansicpg65001\\'c3\\'a4\xc3\xa4",
              "<p>дäää</p>"},
             {"symbols are bullets", "\\f4\\'b7 a\\u-3913?b", "<ul><li>a•b</li></ul>"},
             {"unicode and its fallback", "\\u228?a\\u8364\\'80\\uc2\\u228xyb{\\uc0\\u228 c}\\u228 1",
              "<p>äa€äbäcä</p>"},
             {"unicode whose fallback is missing", "\\u228{?}\\u228\\b b\\u228\\bullet ?",
              "<p>ä?ä<b>bä?</b></p>"},
             {"surrogates", "\\u-10179?\\u-8704?\\u-10179?b\\u-8704?\\u128512?", "<p>😀\uFFFDb\uFFFD😀</p>"},
             {"no characters", "a\\u1?\\u-2?\\u-1?\\'01\\u127?\\u65532?\\u64976?b", "<p>ab</p>"},
             {"left out",
              "{\\info{\\title t}}{\\*\\new\\par x{y}}{\\pict\\bin3 }}}}{\\header h}\\bin2 {{a{\\*}b",
              "<p>ab</p>"},
             {"a destination outside of a group", "a\\info b", "<p>ab</p>"},
             {"bullets",
              "{\\pntext\\'95\\tab}a\\par\\bullet\\tab b\\par{\\listtext\t\\uc0\\u8226 \t}\\b c\\par d",
              "<ul><li>a</li><li>b</li><li><b>c</b></li></ul><p><b>d</b></p>"},
             {"lists within lists",
              "\\li360\\bullet\\tab a\\par\\li720\\bullet\\tab b\\par\\li360\\bullet\\tab c",
              "<ul><li>a<ul><li>b</li></ul></li><li>c</li></ul>"},
             {"numbers stay text", "{\\listtext\t1.\t}a\\tab b", "<p>1.\ta\tb</p>"},
             {"link", link("https://e.example/?a=1&b=\\'e4") + "y",
              "<p><a href=\"https://e.example/?a=1&amp;b=%C3%A4\">x</a>y</p>"},
             {"link in a link", "{\\field{\\*\\fldinst HYPERLINK a}{\\fldrslt b" + link("c") + "}}",
              "<p><a href=\"a\">bx</a></p>"},
             {"styles in a link",
              "{\\field{\\*\\fldinst HYPERLINK \\\\h mailto:a@b.example }{\\fldrslt\\cf1\\ul a\\b b\\par c}}",
              "<p><a href=\"mailto:a@b.example\">a<b>b</b></a></p>"
              "<p><span style=\"color:#ff0010;\"><u><b>c</b></u></span></p>"},
             {"relative link", link("notes/a b.html"), "<p><a href=\"notes/a%20b.html\">x</a></p>"},
             {"a link to a place within", "{\\field{\\*\\fldinst HYPERLINK \\\\l \"top\"}{\\fldrslt x}}",
              "<p>x</p>"},
             {"truncated", "a{\\b b\\'e", "<p>a<b>be</b></p>"}});
    }
    void html() {
        const auto [rtf, html] = row<QByteArray, QString>();
        QCOMPARE(bodyOf(rtf), html);
    }

    void unsafeLinksAreText() {
        for (const char* address : {"javascript:alert(1)", "JaVaScript:x", "data:text/html,x",
                                    "//e.example/x", "c:\\x", "", "java\tab script:x"})
            QCOMPARE(bodyOf(link(address)), "<p>x</p>");
    }

    void look() {
        QCOMPARE(bodyOf("\\fs48 a\\fs24 long\\cf1 r\\cf2 w", {.bodyPoints = 10, .background = 0xFFFFFF}),
                 "<p><span style=\"font-size:20pt;\">a</span>long"
                 "<span style=\"color:#ff0010;\">r</span>w</p>");
    }

    void noRichText() {
        for (const char* bytes : {"", "{", "{\\rtx1}", "plain", "<html>", "\\rtf1", "}{\\rtf1"})
            QVERIFY2(!richtext::read(bytes), bytes);
        QVERIFY(richtext::read("{\\rtf")->paragraphs.isEmpty());
    }

    void deepNesting() {
        constexpr qsizetype kMany = 1'000'000;
        const QByteArray deep = "{\\rtf1 a" + QByteArray(kMany, '{') + "b" + QByteArray(kMany, '}') + "c}d";
        QVERIFY(richtext::toHtml(richtext::read(deep).value()).contains(">ac</p>"));
    }

    void randomBytes_data() {
        addRows<QByteArray>(
            {{"text", "\\b Gr\\'fc\\'df\\u8364?e\\b0\\par\\qc{\\i a}\\line\\fs40 b\\cf1 c\\f1 d\\par"},
             {"list", "{\\pntext\\'95\\tab}a\\par\\li720\\bullet\\tab b\\par" + link("http://e.example")},
             {"characters", "\\f3\\'82\\'a0\\'83A{\\f2\\'e4}\\u-10179?\\u-8704?\\pict\\bin5 }}}}}"},
             {"soup", ""}});
    }
    void randomBytes() {
        const QByteArray source = kHead + std::get<0>(row<QByteArray>()) + '}';
        // More rounds for a longer look: RAVELIN_FUZZ_ROUNDS.
        const int rounds = qEnvironmentVariable("RAVELIN_FUZZ_ROUNDS", "1000").toInt();
        QRandomGenerator random(20240229);
        QByteArray bytes = source;
        for (int round = 0; round < rounds; ++round) {
            // Each eighth round starts with a new sample, the others mutate further.
            bytes = mutated(round % 8 == 0 || bytes.size() > 20'000 ? source : bytes, random);
            const QString fault = faultIn(bytes);
            QVERIFY2(fault.isEmpty(), qPrintable(fault + " in " + bytes.toPercentEncoding()));
        }
    }
};

QTEST_APPLESS_MAIN(RichTextTest)
#include "tst_RichText.moc"

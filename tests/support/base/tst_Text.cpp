#include "fakes/Table.h"
#include "support/base/Collections.h"
#include "support/base/Random.h"
#include "support/base/Text.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void lines_data() {
        const Table<QString, QStringList> row("text", "pieces");
        row("carriage return and line feed are two", "a\r\nb", {"a", "", "b"});
        row("every newline", u"1\n2\v3\f4\r5\u00856\u20287\u20298"_s,
            {"1", "2", "3", "4", "5", "6", "7", "8"});
        row("empty", "", {""});
        row("last is empty", "a\n", {"a", ""});
    }
    void lines() {
        QFETCH(QString, text);
        QStringList pieces;
        for (const QStringView line : text::lines(text))
            pieces.append(line.toString());
        QTEST(pieces, "pieces");
    }

    void pieces() {
        const QString line = "Stream #0:1(eng): Audio";
        QCOMPARE(text::split(line, u":").size(), 3);
        QCOMPARE(text::piece(line, u":", 2).value(), u" Audio"_s);
        QVERIFY(!text::piece(line, u":", 3));
        QCOMPARE(text::piece(u"", u":", 0).value(), u""_s);
    }

    void trimming() {
        QCOMPARE(text::trimmedOfWhitespace(u" \t a\n "), u"a\n"_s);
        QCOMPARE(text::trimmedOfWhitespaceAndNewlines(u" \r\n a b\u2029"), u"a b"_s);
        QCOMPARE(text::trimmedOf(u"1(eng)", u"0123456789()"), u"eng"_s);
        QCOMPARE(text::trimmedTo(u"1920x1080,", u"0123456789x"), u"1920x1080"_s);
        QCOMPARE(text::trimmedTo(u"abc", u"0"), u""_s);
        QCOMPARE(text::strippedOfNewlines("a\r\nb\u2028c"), u"abc"_s);
    }

    void integers() {
        QCOMPARE(text::integerValue(u"42"), 42);
        QCOMPARE(text::integerValue(u"42 kb/s"), 42);
        QCOMPARE(text::integerValue(u"  -7x"), -7);
        QCOMPARE(text::integerValue(u"N/A"), 0);
        QCOMPARE(text::integerValue(u"99999999999"), std::numeric_limits<int>::max());
        QCOMPARE(text::integerValue(u"-99999999999999999999999"), std::numeric_limits<int>::min());
    }

    void encodings_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("utf-8") << QByteArray("Gr\xc3\xbc\xc3\x9f") << u"Grüß"_s;
        QTest::newRow("latin 1") << QByteArray("Gr\xfc\xdf") << u"Grüß"_s;
        QTest::newRow("utf-16 with mark") << QByteArray("\xff\xfeG\0r\0", 6) << u"Gr"_s;
        QTest::newRow("utf-8 with mark") << QByteArray("\xef\xbb\xbfGr") << u"Gr"_s;
        QTest::newRow("latin 1 with a mark of utf-8") << QByteArray("\xef\xbb\xbf\xfc") << u"ï»¿ü"_s;
        QTest::newRow("half a character of utf-16") << QByteArray("\xff\xfeG") << u"ÿþG"_s;
    }
    void encodings() {
        QFETCH(QByteArray, bytes);
        QTEST(text::fromData(bytes), "text");
    }

    void reportsAreStrictUtf8() { QVERIFY(!text::fromUtf8("Gr\xfc\xdf")); }

    void durations() {
        QCOMPARE(text::formattedTimeFromTimeInterval(59.9), "59s");  // Truncated, not rounded.
        QCOMPARE(text::formattedTimeFromTimeInterval(61), "1m 1s");
        QCOMPARE(text::formattedTimeFromTimeInterval(18000), "300m 0s");
        QCOMPARE(text::formattedTimeFromTimeInterval(0), "0s");
    }

    void escaping() {
        QCOMPARE(text::escaped("mailto:a@b.example?subject=a b&body=100% ü\n#"),
                 u"mailto:a@b.example?subject=a%20b&body=100%25%20%C3%BC%0A%23"_s);
    }

    void collectionsKeepOrder() {
        const QList<int> numbers{3, 1, 2, 3};
        QCOMPARE(collections::filtered(numbers, [](int n) { return n > 1; }), (QList<int>{3, 2, 3}));
        QCOMPARE(collections::reduce(QList<int>(), [](int n) { return n; }), 0);
        QCOMPARE(collections::reduce(QList<int>(3, 2'000'000'000), [](int n) { return n; }), 6'000'000'000);
        QCOMPARE(collections::withoutDuplicates(numbers), (QList<int>{3, 1, 2}));
    }

    void nonEmptyCollections() {
        QVERIFY(collections::isNonEmptyCollection(std::optional(QStringList{""})));
        QVERIFY(!collections::isNonEmptyCollection(std::optional(QStringList())));
        QVERIFY(!collections::isNonEmptyCollection(std::optional<QStringList>()));
        QVERIFY(!collections::isNonEmptyCollection(42));
    }

    void randomNumbersReachBothLimits() {
        QSet<int> seen;
        for (int i = 0; i < 500; ++i) {
            seen.insert(generateRandomIntBetween(1, -1));
            const float number = generateRandomFloatBetween(2, 3);
            QVERIFY(number >= 2 && number <= 3);
        }
        QCOMPARE(seen, (QSet<int>{-1, 0, 1}));
    }
};

QTEST_GUILESS_MAIN(TextTest)
#include "tst_Text.moc"

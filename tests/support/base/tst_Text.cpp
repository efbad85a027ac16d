#include "support/base/Collections.h"
#include "support/base/Random.h"
#include "support/base/Text.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void lines_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("pieces");
        QTest::newRow("carriage return and line feed are two") << u"a\r\nb"_s << QStringList{"a", "", "b"};
        QTest::newRow("every newline")
            << u"1\n2\v3\f4\r5\u00856\u20287\u20298"_s << QStringList{"1", "2", "3", "4", "5", "6", "7", "8"};
        QTest::newRow("empty") << u""_s << QStringList{""};
        QTest::newRow("last is empty") << u"a\n"_s << QStringList{"a", ""};
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

    void integers_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("number");
        QTest::newRow("plain") << u"42"_s << 42;
        QTest::newRow("what follows") << u"42 kb/s"_s << 42;
        QTest::newRow("sign and blanks") << u"  -7x"_s << -7;
        QTest::newRow("none") << u"N/A"_s << 0;
        QTest::newRow("too large") << u"99999999999"_s << std::numeric_limits<int>::max();
        QTest::newRow("far too small") << u"-99999999999999999999999"_s << std::numeric_limits<int>::min();
    }
    void integers() {
        QFETCH(QString, text);
        QTEST(text::integerValue(text), "number");
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

    void durations_data() {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("cut, not rounded") << 59.9 << u"59s"_s;
        QTest::newRow("minutes") << 61.0 << u"1m 1s"_s;
        QTest::newRow("no hours") << 18000.0 << u"300m 0s"_s;
        QTest::newRow("nothing") << 0.0 << u"0s"_s;
    }
    void durations() {
        QFETCH(double, seconds);
        QTEST(text::formattedTimeFromTimeInterval(seconds), "text");
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

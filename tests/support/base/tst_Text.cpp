#include "support/base/Collections.h"
#include "support/base/Format.h"
#include "support/base/Text.h"

#include <QTest>
#include <QTimeZone>

using namespace Qt::StringLiterals;

class TextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void lines() {
        const auto lines = [](const QString& text) {
            QStringList pieces;
            for (const QStringView line : text::lines(text))
                pieces.append(line.toString());
            return pieces.join('|');
        };
        QCOMPARE(lines("a\r\nb"), "a||b");
        QCOMPARE(lines(u"1\n2\v3\f4\r5\u00856\u20287\u20298\n"_s), "1|2|3|4|5|6|7|8|");
        QCOMPARE(text::lines(QString()).size(), 1);
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
        QCOMPARE(text::integerValue(u"42 kb/s"), 42);
        QCOMPARE(text::integerValue(u"  -7x"), -7);
        QCOMPARE(text::integerValue(u"N/A"), 0);
        QCOMPARE(text::integerValue(u"99999999999"), std::numeric_limits<int>::max());
        QCOMPARE(text::integerValue(u"-99999999999999999999999"), std::numeric_limits<int>::min());
    }

    void encodings() {
        QCOMPARE(text::fromData("Gr\xc3\xbc\xc3\x9f"), u"Grüß"_s);
        QCOMPARE(text::fromData("Gr\xfc\xdf"), u"Grüß"_s);
        QCOMPARE(text::fromData({"\xff\xfeG\0r\0", 6}), u"Gr"_s);
        QCOMPARE(text::fromData("\xef\xbb\xbfGr"), u"Gr"_s);
        // What contradicts its mark.
        QCOMPARE(text::fromData("\xef\xbb\xbf\xfc"), u"ï»¿ü"_s);
        QCOMPARE(text::fromData("\xff\xfeG"), u"ÿþG"_s);
        QVERIFY(!text::fromUtf8("Gr\xfc\xdf"));
    }

    void durations() {
        QCOMPARE(text::formattedTimeFromTimeInterval(59.9), "59s");  // Truncated, not rounded.
        QCOMPARE(text::formattedTimeFromTimeInterval(61), "1m 1s");
        QCOMPARE(text::formattedTimeFromTimeInterval(18000), "300m 0s");
    }

    void listsOfValues() {
        QCOMPARE(collections::filtered(QList<int>{3, 1, 2}, [](int n) { return n > 1; }), (QList<int>{3, 2}));

        QCOMPARE(collections::reduce(QList<int>(3, 2'000'000'000), [](int n) { return n; }), 6'000'000'000);
        QCOMPARE(collections::withoutDuplicates(QList<int>{3, 1, 2, 3}), (QList<int>{3, 1, 2}));
        QVERIFY(collections::isNonEmptyCollection(std::optional(QStringList{""})));
        QVERIFY(!collections::isNonEmptyCollection(std::optional(QStringList())));
        QVERIFY(!collections::isNonEmptyCollection(std::optional<QStringList>()));
    }

    void placeholders() {
        QCOMPARE(
            makeString("#%@: %@ (%@)%@", QString("1"), QString("eng"), QString("ac3"), QString(" [5.1]")),
            "#1: eng (ac3) [5.1]");
        QCOMPARE(makeString(" [%li Job(s), %li Queued]", qint64{5}, 2), " [5 Job(s), 2 Queued]");
        QCOMPARE(makeString("[0:%i]volume=%.2f[out]", 1, 1.5F), "[0:1]volume=1.50[out]");
        QCOMPARE(makeString("100%% the same, %@%@", QString("a"), QString("%@")), "100% the same, a%@");
        QCOMPARE(makeString("%lu …", quint64{18446744073709551615U}), "18446744073709551615 …");
        QCOMPARE(makeString("%@|%@", std::optional<QString>(), std::optional<QString>("x")), "(null)|x");
        QCOMPARE(makeString("%@%@", std::optional<qint32>(), QVariant()), "(null)(null)");
    }

    void descriptions() {
        QCOMPARE(describe(QStringList{"#1: eng (ac3)", "plain"}), "(\n    \"#1: eng (ac3)\",\n    plain\n)");
        QCOMPARE(describe(QList<int>{2, 3}), "(\n    2,\n    3\n)");
        QCOMPARE(describe(QStringList()), "(\n)");
        const QDateTime date(QDate(2024, 2, 3), QTime(4, 5, 6), QTimeZone::utc());
        QCOMPARE(describe(date), "2024-02-03 04:05:06 +0000");
    }
};

QTEST_GUILESS_MAIN(TextTest)
#include "tst_Text.moc"

#include "support/base/Format.h"

#include <QTest>

class FormatTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void placeholders() {
        QCOMPARE(
            makeString("#%@: %@ (%@)%@", QString("1"), QString("eng"), QString("ac3"), QString(" [5.1]")),
            "#1: eng (ac3) [5.1]");
        QCOMPARE(makeString(" [%li Job(s), %li Queued]", qint64{5}, 2), " [5 Job(s), 2 Queued]");
        QCOMPARE(makeString("[0:%i]volume=%.2f[out]", 1, 1.5F), "[0:1]volume=1.50[out]");
        QCOMPARE(makeString("not 100%% the same, %@%@", QString("a"), QString("%@")),
                 "not 100% the same, a%@");
        QCOMPARE(makeString("%lu …", quint64{18446744073709551615U}), "18446744073709551615 …");
    }

    void missingObjects() {
        QCOMPARE(makeString("%@|%@", std::optional<QString>(), std::optional<QString>("x")), "(null)|x");
        QCOMPARE(makeString("%@", std::optional<qint32>()), "(null)");
        QCOMPARE(makeString("%@", QVariant()), "(null)");
    }

    void descriptions() {
        QCOMPARE(describe(QStringList{"#1: eng (ac3)", "plain"}), "(\n    \"#1: eng (ac3)\",\n    plain\n)");
        QCOMPARE(describe(QList<int>{2, 3}), "(\n    2,\n    3\n)");
        QCOMPARE(describe(QStringList()), "(\n)");
        const QDateTime date(QDate(2024, 2, 3), QTime(4, 5, 6), Qt::UTC);
        QCOMPARE(describe(date), "2024-02-03 04:05:06 +0000");
    }

    /// Formats are checked at compile time; these mismatches must not compile.
    void mismatchesAreKnown() {
        using namespace format_detail;
        static_assert(!fits<QString>(Kind::Signed32) && !fits<int>(Kind::Object));
        static_assert(!fits<qint64>(Kind::Signed32) && !fits<quint64>(Kind::Signed));
        static_assert(!fits<int>(Kind::Floating) && fits<bool>(Kind::Signed32));
        static_assert(fits<double>(Kind::Floating) && fits<int*>(Kind::Pointer));
        static_assert(readPlaceholder("%q").length == 0 && readPlaceholder("%").length == 0);
    }
};

QTEST_GUILESS_MAIN(FormatTest)
#include "tst_Format.moc"

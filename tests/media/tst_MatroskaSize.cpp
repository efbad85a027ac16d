#include "media/MatroskaSize.h"

#include <QTemporaryFile>
#include <QTest>

namespace {

const QByteArray kHeader = QByteArray::fromHex("1a45dfa3 84 42868101");
const QByteArray kSegmentOf100 = QByteArray::fromHex("18538067 0100000000000064");

}  // namespace

class MatroskaSizeTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void declaredSize_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<quint64>("declared");  // 0: none. Of what breaks off: one more than is there.
        const auto hex = [](const char* text) { return QByteArray::fromHex(text); };
        QTest::newRow("size of 8 bytes") << kHeader + kSegmentOf100 << quint64{9 + 12 + 100};
        QTest::newRow("size of 1 byte") << kHeader + hex("18538067 85") << quint64{9 + 5 + 5};
        QTest::newRow("padding before") << kHeader + hex("ec 820000 18538067 85") << quint64{9 + 4 + 5 + 5};
        QTest::newRow("huge") << kHeader + hex("18538067 01fffffffffffffe") << (1ULL << 56U) - 2 + 9 + 12;
        QTest::newRow("unknown, 8 bytes") << kHeader + hex("18538067 01ffffffffffffff") << quint64{0};
        QTest::newRow("unknown, 1 byte") << kHeader + hex("18538067 ff 00000000") << quint64{0};
        QTest::newRow("breaks off in the header") << kHeader.first(6) << quint64{7};
        QTest::newRow("breaks off behind the header") << kHeader << quint64{10};
        QTest::newRow("breaks off in the size") << kHeader + kSegmentOf100.first(6) << quint64{16};
        QTest::newRow("no size") << kHeader + hex("18538067 00 00000000") << quint64{0};
        QTest::newRow("something else follows") << kHeader + hex("1f43b675 85 00000000") << quint64{0};
        QTest::newRow("another format") << QByteArray("RIFF....AVI LIST") << quint64{0};
        QTest::newRow("zeros") << QByteArray(100, 0) << quint64{0};
        QTest::newRow("empty") << QByteArray() << quint64{0};
    }
    void declaredSize() {
        QFETCH(QByteArray, bytes);
        QFETCH(quint64, declared);
        QTemporaryFile file;
        QVERIFY(file.open() && file.write(bytes) == bytes.size() && file.flush());
        QCOMPARE(matroska::declaredSize(file.fileName()).value_or(0), declared);
    }
};

QTEST_APPLESS_MAIN(MatroskaSizeTest)
#include "tst_MatroskaSize.moc"

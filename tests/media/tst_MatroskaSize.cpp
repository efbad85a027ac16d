#include "fakes/Table.h"
#include "media/MatroskaSize.h"

#include <QTemporaryFile>

namespace {

const QByteArray kHeader = QByteArray::fromHex("1a45dfa3 84 42868101");
const QByteArray kSegmentOf100 = QByteArray::fromHex("18538067 0100000000000064");

}  // namespace

class MatroskaSizeTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void declaredSize_data() {
        const auto hex = [](const char* text) { return QByteArray::fromHex(text); };
        addRows<QByteArray, quint64>(  // 0: none. Of what breaks off: one more than is there.
            {{"size of 8 bytes", kHeader + kSegmentOf100, 9 + 12 + 100},
             {"size of 1 byte", kHeader + hex("18538067 85"), 9 + 5 + 5},
             {"padding before", kHeader + hex("ec 820000 18538067 85"), 9 + 4 + 5 + 5},
             {"huge", kHeader + hex("18538067 01fffffffffffffe"), (1ULL << 56U) - 2 + 9 + 12},
             {"unknown, 8 bytes", kHeader + hex("18538067 01ffffffffffffff"), 0},
             {"unknown, 1 byte", kHeader + hex("18538067 ff 00000000"), 0},
             {"breaks off in the header", kHeader.first(6), 7},
             {"breaks off behind the header", kHeader, 10},
             {"breaks off in the size", kHeader + kSegmentOf100.first(6), 16},
             {"no size", kHeader + hex("18538067 00 00000000"), 0},
             {"something else follows", kHeader + hex("1f43b675 85 00000000"), 0},
             {"another format", "RIFF....AVI LIST", 0},
             {"empty", "", 0}});
    }
    void declaredSize() {
        const auto [bytes, declared] = row<QByteArray, quint64>();
        QTemporaryFile file;
        QVERIFY(file.open() && file.write(bytes) == bytes.size() && file.flush());
        QCOMPARE(matroska::declaredSize(file.fileName()).value_or(0), declared);
    }
};

QTEST_APPLESS_MAIN(MatroskaSizeTest)
#include "tst_MatroskaSize.moc"

#include "watch/completion/CompletionRule.h"

#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;
using completion::Known;
using completion::Rule;
using writercheck::Sight;
using writercheck::Writers;
using WaitsFor = Rule::WaitsFor;

class CompletionRuleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void rule() {
        const auto file = [](Writers writers, Sight sight = Sight::All, qint64 size = 1) {
            FileLook look;
            look.shape.size = size;
            look.writers = writers;
            look.sight = sight;
            return look;
        };
        FileLook link = file(Writers::NotKnown);
        link.isSymbolicLink = true;
        FileLook hardLink = file(Writers::NotKnown);
        hardLink.hasOtherNames = true;
        const completion::Times times;
        const auto rule = [&](const FileLook& look, Known known) {
            const Rule made = completion::ruleFor(look, known, times);
            if (made.waitsFor == WaitsFor::Closing) return "closing";
            if (made.waitsFor == WaitsFor::Event) return "event";
            const bool isLong = made.still == times.longStill && made.declaredSizeCounts;
            if (isLong) return "long stillness";
            return made.still == times.still && !made.declaredSizeCounts ? "stillness" : "another time";
        };
        QCOMPARE(rule(file(Writers::None), Known::Unknown), "stillness");
        QCOMPARE(rule(file(Writers::None), Known::Modified), "stillness");  // Its close was lost.
        QCOMPARE(rule(file(Writers::Some, Sight::Local), Known::SeenWhole), "closing");  // Behind FUSE.
        QCOMPARE(rule(file(Writers::None, Sight::Local), Known::SeenWhole), "long stillness");
        QCOMPARE(rule(file(Writers::None, Sight::None, 0), Known::Created), "closing");
        QCOMPARE(rule(hardLink, Known::Created), "long stillness");
        QCOMPARE(rule(hardLink, Known::Modified), "event");
        QCOMPARE(rule(link, Known::SeenWhole), "long stillness");
    }

    // Opening the file during our check neither fails nor kills this process.
    void checkDoesNotDisturbWriters() {
        const QTemporaryDir folder;
        const QByteArray path = QFile::encodeName(folder.filePath("a.mkv"));
        QVERIFY(QFile(folder.filePath("a.mkv")).open(QIODevice::WriteOnly));
        std::atomic<int> refused = 0;
        std::atomic<bool> enough = false;
        std::thread writer([&] {
            while (!enough) {
                const int file = ::open(path.constData(), O_WRONLY | O_CLOEXEC);
                file < 0 ? ++refused : ::close(file);
            }
        });
        int seen[3] = {};
        const auto isDone = [&] { return seen[int(Writers::None)] > 5000 && seen[int(Writers::Some)] > 100; };
        const QDeadlineTimer deadline(10s);
        while (!isDone() && !deadline.hasExpired())
            ++seen[int(lookAt(QString::fromUtf8(path), {}).writers)];
        enough = true;
        writer.join();
        QVERIFY(isDone());
        QCOMPARE(refused, 0);
    }

    void knownWritersDependOnRights() {
        const int file = ::open("/etc/passwd", O_RDONLY | O_CLOEXEC);
        const bool isRoot = ::geteuid() == 0;
        if (isRoot) QCOMPARE(::seteuid(65534), 0);
        const Writers writers = writercheck::writersOf(file);
        if (isRoot) QCOMPARE(::seteuid(0), 0);
        ::close(file);
        QCOMPARE(writers, Writers::NotKnown);
    }
};

QTEST_APPLESS_MAIN(CompletionRuleTest)
#include "tst_CompletionRule.moc"

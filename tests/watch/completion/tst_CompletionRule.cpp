#include "fakes/Table.h"
#include "watch/completion/CompletionRule.h"

#include <QTemporaryDir>

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

Q_DECLARE_METATYPE(FileLook)
Q_DECLARE_METATYPE(completion::Rule)

class CompletionRuleTest : public QObject {
    Q_OBJECT

    static constexpr completion::Times kTimes = {};

private Q_SLOTS:
    void rule_data() {
        const Rule still = {WaitsFor::Stillness, kTimes.still, false};
        const Rule longStill = {WaitsFor::Stillness, kTimes.longStill, true};
        const Rule event = {WaitsFor::Event};
        const Rule closing = {WaitsFor::Closing};
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
        addRows<FileLook, Known, Rule>(
            {{"free, no event", file(Writers::None), Known::Unknown, still},
             {"free, close lost", file(Writers::None), Known::Modified, still},
             {"local writer behind FUSE", file(Writers::Some, Sight::Local), Known::SeenWhole, closing},
             {"FUSE", file(Writers::None, Sight::Local), Known::SeenWhole, longStill},
             {"empty, network", file(Writers::None, Sight::None, 0), Known::Created, closing},
             {"another's hard link", hardLink, Known::Created, longStill},
             {"another's hard link, written", hardLink, Known::Modified, event},
             {"link to another's", link, Known::SeenWhole, longStill}});
    }
    void rule() {
        const auto [look, known, rule] = row<FileLook, Known, Rule>();
        const Rule actual = completion::ruleFor(look, known, kTimes);
        QCOMPARE(actual.waitsFor, rule.waitsFor);
        QCOMPARE(actual.still.count(), rule.still.count());
        QCOMPARE(actual.declaredSizeCounts, rule.declaredSizeCounts);
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

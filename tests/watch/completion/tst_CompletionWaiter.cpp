#include "fakes/Table.h"
#include "watch/completion/CompletionRule.h"
#include "watch/completion/CompletionWaiter.h"

#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <atomic>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;
using completion::Known;
using completion::Rule;
using writercheck::Sight;
using writercheck::Writers;
using WaitsFor = Rule::WaitsFor;

namespace {

constexpr completion::Times kQuick = {20ms, 60ms, 5ms, 20ms};

FileLook::Sources answering(Writers writers, Sight sight = Sight::All) {
    return {[writers](int) { return writers; }, [sight](const QString&) { return sight; }};
}

/// A folder and a waiter for its files.
struct Scene {
    explicit Scene(const completion::Times& times = kQuick, const FileLook::Sources& sources = {})
        : waiter(times, sources) {}

    QString path(const QString& name) const { return folder.filePath(name); }
    /// Appends to a file in the folder.
    QString write(const QString& name, const QByteArray& bytes = "bytes") const {
        QFile file(path(name));
        if (!file.open(QIODevice::Append) || file.write(bytes) != bytes.size()) qFatal("Cannot write.");
        return file.fileName();
    }
    /// Whether the waiter checks its files `looks` more times.
    bool looked(quint64 looks = 3) const {
        const quint64 enough = waiter.looks() + looks;
        return QTest::qWaitFor([&] { return waiter.looks() >= enough; });
    }
    bool isAsleep() const { return !waiter.findChild<QTimer*>()->isActive(); }

    QTemporaryDir folder;
    CompletionWaiter waiter;
    QSignalSpy complete{&waiter, &CompletionWaiter::complete};
    QSignalSpy abandoned{&waiter, &CompletionWaiter::abandoned};
};

}  // namespace

class CompletionWaiterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aWriterThatPausesIsWaitedFor() {
        for (const Known known : {Known::Unknown, Known::Created, Known::SeenWhole}) {
            Scene scene;
            QFile writer(scene.write("a.mkv"));
            QVERIFY(writer.open(QIODevice::Append | QIODevice::Unbuffered));
            scene.waiter.wait(writer.fileName(), known);
            for (int piece = 0; piece < 3; ++piece) {
                QVERIFY(scene.looked());
                writer.write("more");
                scene.waiter.wait(writer.fileName(), Known::Modified);
            }
            QVERIFY(scene.complete.isEmpty());
            writer.close();
            scene.waiter.wait(writer.fileName(), Known::SeenWhole);
            QTRY_COMPARE(scene.complete.count(), 1);
            QCOMPARE(scene.complete.at(0).at(0).toString(), writer.fileName());
            QCOMPARE(scene.waiter.waitingCount(), 0);
            QTRY_VERIFY(scene.isAsleep());
        }
    }

    // With a limit of one hour, only the file's own times can show that it is unchanged.
    void unchangedFilesAreCompleteAtOnce_data() {
        addRows<Known, int, bool>({{"moved in", Known::SeenWhole, 7200, true},
                                   {"written just now", Known::SeenWhole, 0, false},
                                   {"from the future", Known::SeenWhole, -7200, false},
                                   {"only dated back", Known::Unknown, 7200, false}});
    }
    void unchangedFilesAreCompleteAtOnce() {
        const auto [known, age, atOnce] = row<Known, int, bool>();
        Scene scene({1h, 2h});
        QFile file(scene.write("a.mkv"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const auto modified = QDateTime::currentDateTime().addSecs(-age);
        const timespec times[] = {{0, UTIME_OMIT}, {modified.toSecsSinceEpoch(), 0}};
        QCOMPARE(::futimens(file.handle(), times), 0);
        scene.waiter.wait(file.fileName(), known);
        QVERIFY(scene.looked(1));
        QCOMPARE(scene.complete.count(), atOnce ? 1 : 0);
    }

    void dropsOut_data() {
        addRows<QString>({{"missing", {}},
                          {"folder", "mkdir"},
                          {"FIFO", "mkfifo"},
                          {"device", "ln -s /dev/zero"},
                          {"dangling link", "ln -s /nowhere"},
                          {"loop of links", "ln -s a.mkv"}});
    }
    void dropsOut() {
        const auto [made] = row<QString>();
        Scene scene;
        const QString path = scene.path("a.mkv");
        // At once, and replacing an empty file that was waited for.
        for (int round = 1; round <= 2; ++round) {
            if (round == 2) {
                ::remove(qPrintable(path));
                scene.waiter.wait(scene.write("a.mkv", {}), Known::Created);
                QVERIFY(scene.looked(1));
                QFile::remove(path);
            }
            QStringList command = made.split(u' ') << path;
            if (!made.isEmpty()) QCOMPARE(QProcess::execute(command.takeFirst(), command), 0);
            if (round == 1) scene.waiter.wait(path, Known::Created);
            scene.waiter.lookAgain(path);
            QTRY_COMPARE(scene.abandoned.count(), round);
        }
        QVERIFY(scene.complete.isEmpty() && scene.waiter.waiting().isEmpty());
    }

    void anEmptyFileWaitsWithoutCost() {
        Scene scene;
        const QString path = scene.write("a.mkv", {});
        scene.waiter.wait(path, Known::SeenWhole);
        QVERIFY(scene.looked(1));
        QTRY_VERIFY(scene.isAsleep());
        QCOMPARE(scene.waiter.waiting(), {path});
        scene.write("a.mkv");
        scene.waiter.wait(path, Known::Modified);  // Its close event may be lost; the lease shows the state.
        QTRY_COMPARE(scene.complete.count(), 1);
    }

    void manyFilesWithFewDescriptorsAndShortTurns() {
        const auto descriptors = [] {
            return QDir("/proc/self/fd").entryList(QDir::System | QDir::Files).size();
        };
        const auto before = descriptors();
        qsizetype most = 0;
        FileLook::Sources sources;
        sources.writers = [&](int file) {
            most = qMax(most, descriptors());
            return writercheck::writersOf(file);
        };
        Scene scene(kQuick, sources);
        QSignalSpy changes(&scene.waiter, &CompletionWaiter::waitingChanged);
        for (int i = 0; i < 2000; ++i)
            scene.waiter.wait(scene.write(QString::number(i)), Known::SeenWhole);
        QCOMPARE(scene.waiter.waitingCount(), 2000);
        int turnsOfOthers = 0;
        QTimer others;
        connect(&others, &QTimer::timeout, this, [&] { ++turnsOfOthers; });
        others.start(0);
        QTRY_COMPARE_WITH_TIMEOUT(scene.complete.count(), 2000, 30000);
        QVERIFY(most > before && most <= before + 4);
        QVERIFY(turnsOfOthers > 5);
        QVERIFY(changes.count() < 1500);
    }

    void anotherUsersFileWaitsForItsClose() {
        Scene scene(kQuick, answering(Writers::NotKnown));
        const QString path = scene.write("a.mkv");
        for (const Known known : {Known::Created, Known::Modified}) {
            scene.waiter.wait(path, known);
            QVERIFY(scene.looked(1));
            QTRY_VERIFY(scene.isAsleep());
        }
        QVERIFY(scene.complete.isEmpty());
        scene.waiter.wait(path, Known::SeenWhole);
        QTRY_COMPARE(scene.complete.count(), 1);
    }

    void whereNothingIsKnownTheDeclaredSizeIsReached() {
        for (const auto& sources : {answering(Writers::Some, Sight::None), answering(Writers::NotKnown)}) {
            Scene scene(kQuick, sources);
            const QString path = scene.write("a.mkv", QByteArray::fromHex("1a45dfa3 80 18538067 e4"));
            scene.waiter.wait(path, Known::Unknown);
            QVERIFY(scene.looked(5));
            scene.write("a.mkv", QByteArray(99, 'x'));
            QVERIFY(scene.looked(5));
            QVERIFY(scene.complete.isEmpty());
            scene.write("a.mkv", "x");
            QTRY_COMPARE(scene.complete.count(), 1);
        }
    }

    void aGrowingFileOnANetworkVolume() {
        int pieces = 0;
        auto sources = answering(Writers::None);
        sources.sight = [&](const QString& path) {  // Asked once a look, so that it grows before each.
            QFile file(path);
            if (++pieces <= 20 && file.open(QIODevice::Append)) file.write("piece");
            return Sight::None;
        };
        Scene scene({1ms, 2ms, 1ms, 1ms}, sources);
        scene.waiter.wait(scene.write("a.mkv"), Known::SeenWhole);
        QTRY_COMPARE(scene.complete.count(), 1);
        QVERIFY(pieces > 20);
    }

    void slotsMayCallAnything() {
        Scene scene;
        const QString path = scene.write("a.mkv");
        int rounds = 0;
        connect(&scene.waiter, &CompletionWaiter::complete, this, [&] {
            if (++rounds < 3) scene.waiter.wait(path, Known::SeenWhole);
            scene.waiter.cancel("another");
        });
        scene.waiter.wait(path, Known::SeenWhole);
        QTRY_COMPARE(rounds, 3);

        auto waiter = std::make_unique<CompletionWaiter>(kQuick, FileLook::Sources());
        connect(waiter.get(), &CompletionWaiter::complete, this, [&] { waiter.reset(); });
        waiter->wait(path, Known::SeenWhole);
        waiter->wait(scene.write("b.mkv"), Known::SeenWhole);
        QTRY_VERIFY(!waiter);

        Scene alerting;
        connect(&alerting.waiter, &CompletionWaiter::complete, this, [&] {
            if (alerting.complete.count() == 1) QTRY_COMPARE(alerting.complete.count(), 2);
        });
        for (const char* name : {"c.mkv", "d.mkv"})
            alerting.waiter.wait(alerting.write(name), Known::SeenWhole);
        QTRY_COMPARE(alerting.complete.count(), 2);
    }

    void rule() {
        FileLook look;
        const completion::Times times;
        const auto rule = [&](Writers writers, Sight sight, Known known, qint64 size = 1) {
            look.shape.size = size;
            look.writers = writers;
            look.sight = sight;
            const Rule made = completion::ruleFor(look, known, times);
            if (made.waitsFor == WaitsFor::Closing) return "closing";
            if (made.waitsFor == WaitsFor::Event) return "event";
            if (made.still == times.longStill && made.declaredSizeCounts) return "long stillness";
            return made.still == times.still && !made.declaredSizeCounts ? "stillness" : "another time";
        };
        QCOMPARE(rule(Writers::None, Sight::All, Known::Unknown), "stillness");
        QCOMPARE(rule(Writers::None, Sight::All, Known::Modified), "stillness");   // Its close was lost.
        QCOMPARE(rule(Writers::Some, Sight::Local, Known::SeenWhole), "closing");  // Behind FUSE.
        QCOMPARE(rule(Writers::None, Sight::Local, Known::SeenWhole), "long stillness");
        QCOMPARE(rule(Writers::None, Sight::None, Known::Created, 0), "closing");
        look.hasOtherNames = true;
        QCOMPARE(rule(Writers::NotKnown, Sight::All, Known::Created), "long stillness");
        QCOMPARE(rule(Writers::NotKnown, Sight::All, Known::Modified), "event");
        look.isSymbolicLink = true;
        QCOMPARE(rule(Writers::NotKnown, Sight::All, Known::SeenWhole), "long stillness");
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

QTEST_GUILESS_MAIN(CompletionWaiterTest)
#include "tst_CompletionWaiter.moc"

#include "fakes/Table.h"
#include "watch/completion/WriterCheck.h"
#include "watch/events/DirectoryObserver.h"
#include "watch/events/EventReader.h"

#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

fs::path native(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

/// The times of files go in ticks: what is made from now on is newer than what was made before.
void waitForNextTick() {
    const auto now = [] {
        timespec time = {};
        ::clock_gettime(CLOCK_REALTIME_COARSE, &time);
        return std::pair(time.tv_sec, time.tv_nsec);
    };
    const auto before = now();
    if (!QTest::qWaitFor([&] { return now() != before; })) qFatal("the clock stands still");
}

/// A folder that is watched with a short latency, and what was told of it, by path below it.
class Scene {
public:
    explicit Scene(QString root = "root") : m_root(std::move(root)) { act({"/../outside", "/"}); }

    QString path(const QString& name = {}) const {
        return m_home.filePath(name.isEmpty() ? m_root : m_root + u'/' + name);
    }
    /// Each step is "+file" to write to one, "/folder", "-item" to remove it with everything below, "a > b"
    /// to move or "a = b" to link. Paths are below the watched folder; "../outside" is there as well.
    void act(const QStringList& steps) const {
        for (const QString& step : steps) {
            const QStringList ends = step.split(QRegularExpression(" [>=] "));
            const fs::path from = native(path(step.mid(1)));
            if (ends.size() == 2 && step.contains('>'))
                fs::rename(native(path(ends[0])), native(path(ends[1])));
            else if (ends.size() == 2)
                fs::create_hard_link(native(path(ends[0])), native(path(ends[1])));
            else if (step.startsWith('-'))
                fs::remove_all(from);
            else
                fs::create_directories(step.startsWith('/') ? from : from.parent_path());
            if (step.startsWith('+')) std::ofstream(from, std::ios::app) << 'x';
        }
    }

    enum class Wait { No, Yes };

    /// Waits, by default, until the folders below are watched, too.
    void start(Wait wait = Wait::Yes, std::chrono::milliseconds latency = std::chrono::milliseconds(20)) {
        waitForNextTick();
        QString error;
        observer = DirectoryObserver::startObserving(
            path(), true, [this](const QList<EventRecord>& batch) { handleEvents(batch); }, &error, latency,
            latency);
        if (!observer) qFatal("%s", qPrintable(error));
        QSignalSpy watching(observer.get(), &DirectoryObserver::watching);
        if (wait == Wait::Yes && !watching.wait()) qFatal("never watching");
    }

    /// Takes the steps; everything that happened until then is told: an item that is made last is.
    bool settle(const QStringList& steps = {}) {
        const QString last = QString("settled %1").arg(++m_settled);
        act(steps + QStringList('+' + last));
        const bool known = QTest::qWaitFor([&] { return records.contains(last); });
        records.remove(last);
        return known;
    }

    bool has(const QString& name) const { return records.contains(name); }
    quint32 flags(const QString& name) const { return records.value(name).flags; }
    bool wasWritten(const QString& name) const { return (flags(name) & kEventItemModified) != 0; }
    bool isWhole(const QString& name) const { return records.value(name).contents == EventContents::Whole; }

    std::unique_ptr<DirectoryObserver> observer;
    QMap<QString, EventRecord> records;
    int batches = 0;
    bool twice = false;  ///< A path stood in one batch twice.

private:
    void handleEvents(const QList<EventRecord>& batch) {
        ++batches;
        QSet<QString> seen;
        for (const EventRecord& record : batch) {
            twice = twice || seen.contains(record.path);
            seen.insert(record.path);
            const QString name = record.path.mid(path().size() + 1);
            const quint32 before = flags(name);
            records[name] = record;
            records[name].flags |= before;
        }
    }

    QTemporaryDir m_home;
    const QString m_root;
    int m_settled = 0;
};

constexpr quint32 kRenamedFile = kEventItemRenamed | kEventItemIsFile;
constexpr quint32 kModifiedFile = kEventItemModified | kEventItemIsFile;
constexpr quint32 kArrivedFile = kEventItemCreated | kModifiedFile;
constexpr quint32 kRemovedFile = kEventItemRemoved | kEventItemIsFile;
constexpr quint32 kCreatedFolder = kEventItemCreated | kEventItemIsFolder;
constexpr quint32 kRenamedFolder = kEventItemRenamed | kEventItemIsFolder;

}  // namespace

class DirectoryObserverTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void itemEvents_data() {
        const QString longest = QString(u'n').repeated(255);
        addRows<QString, QString, quint32, bool>(  // step, item, its flags, whether it is whole
            {{"created", "+new", "new", kArrivedFile, true},
             {"modified", "+old", "old", kModifiedFile, true},
             {"modified below", "+sub/in", "sub/in", kModifiedFile, true},
             {"was there before", "+new", "old", 0, false},
             {"moved away", "old > new", "old", kRenamedFile, false},
             {"moved here", "old > new", "new", kRenamedFile, true},
             {"moved in", "../outside/f > f", "f", kRenamedFile, true},
             {"moved out", "old > ../outside/o", "old", kRenamedFile, false},
             {"removed", "-old", "old", kRemovedFile, false},
             {"linked", "../outside/f = hard", "hard", kArrivedFile, false},
             {"folder made", "/dir", "dir", kCreatedFolder, false},
             {"folder moved away", "sub > new", "sub", kRenamedFolder, false},
             {"folder moved here", "sub > new", "new", kRenamedFolder, false},
             {"its file moves in silence", "sub > new", "new/in", 0, false},
             {"folder removed", "-sub", "sub", kEventItemRemoved | kEventItemIsFolder, false},
             {"its file removed", "-sub", "sub/in", kRemovedFile, false},
             {"folder moved in", "../outside/d > d", "d", kRenamedFolder, false},
             {"its file moved in", "../outside/d > d", "d/e/deep", kRenamedFile, false},
             {"255 bytes", "+" + longest, longest, kArrivedFile, true},
             {"newline", "+a\nb", "a\nb", kArrivedFile, true}});
    }
    void itemEvents() {
        const auto [step, item, flags, whole] = row<QString, QString, quint32, bool>();
        Scene scene;
        scene.act({"+old", "+sub/in", "+../outside/f", "+../outside/d/e/deep"});
        scene.start();
        QVERIFY(scene.settle({step}));
        QCOMPARE(scene.flags(item), flags);
        QCOMPARE(scene.isWhole(item), whole);
        QVERIFY(!scene.twice);
    }

    void aFileIsWholeUntilItIsWrittenAgain() {
        Scene scene;
        scene.start();
        QFile file(scene.path("f"));
        for (int round = 0; round < 2; ++round) {
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered));
            file.write("x");
            QVERIFY(scene.settle());
            QVERIFY(scene.has("f") && !scene.isWhole("f"));
            file.close();
            QVERIFY(scene.settle());
            QVERIFY(scene.isWhole("f"));
        }
    }

    void everyFileOfABurstInNewFolders() {
        Scene scene;
        scene.start();
        const auto name = [](int i) { return QString("%1/b/c/%2").arg(i % 50).arg(i); };
        for (int i = 0; i < 2000; ++i)
            scene.act({'+' + name(i)});
        for (int i = 0; i < 2000; ++i)
            QTRY_COMPARE(scene.flags(name(i)), kArrivedFile);
        QCOMPARE(scene.flags("49/b"), kCreatedFolder);
        QVERIFY(!scene.twice);
        QCOMPARE(scene.observer->folderCount(), size_t(151));
    }

    /// The kernel hands out about 500 events at a time; a batch is full with 10,000.
    void theEndOfABatch_data() {
        addRows<int, qsizetype, qsizetype>(
            {{"nothing pends", 1500, 1500, 1500}, {"it is full", 12000, 10000, 11000}});
    }
    void theEndOfABatch() {
        const auto [items, least, most] = row<int, qsizetype, qsizetype>();
        const Scene scene;
        EventBatch batch(true);
        TreeWatch tree(native(scene.path()));
        TreeScan scan(tree, batch);
        EventReader events(tree, scan, batch);
        QVERIFY(tree.start().isEmpty());
        for (int i = 0; i < items; ++i)
            fs::create_symlink("x", native(scene.path(QString::number(i))));
        events.read(QDeadlineTimer(QDeadlineTimer::Forever));
        const qsizetype records = batch.drain().size();
        QVERIFY(least <= records && records <= most);
    }

    void movedFoldersStayWatched() {
        Scene scene;
        scene.act({"+a/b/old", "+other/old"});
        scene.start();
        QVERIFY(scene.settle({"a > other/x", "+other/x/b/1"}));
        QCOMPARE(scene.flags("other/x/b/1"), kArrivedFile);
        QCOMPARE(scene.records["other/x"].renamedFrom, scene.path("a"));
        // Pending records are reported under the current name.
        QVERIFY(scene.settle({"+other/x/b/2", "other/x > y", "y > z"}));
        QCOMPARE(scene.flags("z/b/2"), kArrivedFile | kEventItemRenamed);
        QVERIFY(scene.isWhole("z/b/2"));
        QCOMPARE(scene.observer->folderCount(), size_t(4));
    }

    void pathsAreReusedAtOnce() {
        Scene scene;
        scene.act({"+a/old", "+b/old", "+c/old"});
        scene.start();
        QVERIFY(scene.settle({"a > t", "b > a", "t > b", "c > ../outside/c", "/c"}));
        QVERIFY(scene.settle({"+a/1", "+b/2", "+c/3", "+../outside/c/4"}));
        for (const char* name : {"a/1", "b/2", "c/3"})
            QCOMPARE(scene.flags(name), kArrivedFile);
        QVERIFY(!scene.has("c/4"));
        QTRY_COMPARE(scene.observer->folderCount(), size_t(4));
    }

    void aFolderThatLeftIsNotWatched() {
        Scene scene;
        scene.act({"+a/b/old"});
        scene.start();
        scene.act({"a > ../outside/a"});
        QTRY_COMPARE(scene.observer->folderCount(), size_t(1));
        QVERIFY(scene.settle({"+../outside/a/b/1"}));
        QVERIFY(!scene.has("a/b/1"));
        scene.act({"../outside/a > a"});
        QTRY_COMPARE(scene.flags("a/b/1"), kRenamedFile);
    }

    void arrivalsBeforeTheWatch() {
        Scene scene;
        for (int i = 0; i < 300; ++i)
            scene.act({QString("+%1/sub/old").arg(i)});
        scene.act({"+../outside/d/old in d"});
        scene.start(Scene::Wait::No);
        scene.act({"+7/sub/new", "../outside/d > 8/d"});
        QTRY_VERIFY(scene.has("7/sub/new") && scene.has("8/d/old in d"));
        QVERIFY(scene.settle());
        QVERIFY(!scene.has("7/sub/old"));
    }

    void anOverflowLosesNothing_data() { addRows<bool>({{"told", false}, {"real", true}}); }
    void anOverflowLosesNothing() {
        const auto [real] = row<bool>();
        Scene scene;
        scene.act({"+a/b/old", "+../outside/d/in d"});
        QFile limit("/proc/sys/fs/inotify/max_queued_events");
        if (real && !limit.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
            QSKIP("the limit cannot be changed");
        const QByteArray before = real ? limit.readAll() : QByteArray();
        const bool isFew = real && limit.seek(0) && limit.write("16") == 2;
        scene.start();  // Keeps the limit of its creation.
        QVERIFY(!real || (isFew && limit.seek(0) && limit.write(before) == before.size()));
        QVERIFY(scene.settle({"+a/b/told"}));
        scene.records.clear();
        QSignalSpy watching(scene.observer.get(), &DirectoryObserver::watching);
        for (int i = 0; real && i < 100; ++i)
            scene.act({QString("+a/b/%1").arg(i)});
        scene.act({"a > c", "../outside/d > c/d"});
        if (!real) scene.observer->simulateOverflow();
        QTRY_COMPARE(watching.count(), 1);
        QTRY_VERIFY(scene.wasWritten("c/b/told"));
        for (int i = 0; real && i < 100; ++i)
            QTRY_VERIFY(scene.wasWritten(QString("c/b/%1").arg(i)));
        QTRY_VERIFY(scene.has("c/d/in d"));
        QVERIFY(!scene.has("c/b/old"));
        QCOMPARE(scene.observer->folderCount(), size_t(4));
        QVERIFY(scene.settle({"+c/b/late"}));
        QCOMPARE(scene.flags("c/b/late"), kArrivedFile);
    }

    /// Events of one's own changes arrive as everywhere, and what changed is found again without any.
    void aFolderOfTheDocumentsPortalIsReadAgain() {
        Scene scene("doc/1");
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(QDir::cleanPath(scene.path("../.."))));
        scene.act({"+old"});
        scene.start();
        QVERIFY(scene.settle({"+a"}));
        scene.records.clear();
        QTRY_VERIFY(scene.wasWritten("a"));
        QVERIFY(!scene.has("old"));
        QCOMPARE(writercheck::sightOf(scene.path("a")), writercheck::Sight::None);
        scene.observer.reset();
        qunsetenv("XDG_RUNTIME_DIR");
    }

    void linkedFoldersAreNotFollowed() {
        Scene scene;
        scene.act({"/a"});
        QVERIFY(QFile::link(scene.path(), scene.path("a/loop")));
        scene.start();
        QVERIFY(QFile::link(scene.path("a"), scene.path("again")));
        QVERIFY(scene.settle({"+a/f"}));
        QCOMPARE(scene.observer->folderCount(), size_t(2));
        QCOMPARE(scene.records.keys(), QStringList({"a/f", "again"}));
    }

    void aFolderThatBecomesReadable() {
        if (::geteuid() == 0) QSKIP("root reads everything");
        Scene scene;
        scene.act({"+a/f"});
        ::chmod(native(scene.path("a")).c_str(), 0);
        scene.start();
        QCOMPARE(scene.observer->folderCount(), size_t(1));
        ::chmod(native(scene.path("a")).c_str(), 0700);
        QTRY_COMPARE(scene.flags("a/f"), kArrivedFile);
    }

    void namesThatAreNotUtf8MakeNoRecord() {
        Scene scene;
        scene.start();
        const fs::path folder = native(scene.path()) / "\xff";
        fs::create_directory(folder);
        QTRY_COMPARE(scene.batches, 1);
        QVERIFY(scene.records.isEmpty());
        QVERIFY(scene.observer->skippedNames() > 0);
        std::ofstream(folder / "f") << 'x';
        fs::rename(folder, native(scene.path("good")));
        QTRY_COMPARE(scene.flags("good/f"), kRenamedFile);
    }

    void theEndOfTheFolder() {
        for (const QStringList& steps : {QStringList{"-../top/root"},
                                         {"../top/root > ../outside/r"},
                                         {"../top > ../outside/t", "+../outside/t/root/f"}}) {
            const Scene world;
            world.act({"+../top/root/a/f"});
            const auto observer = DirectoryObserver::startObserving(
                world.path("../top/root"), true, [](const auto&) {}, nullptr, 20ms);
            QSignalSpy ended(observer.get(), &DirectoryObserver::ended);
            world.act(steps);
            QTRY_COMPARE(ended.count(), 1);
            QVERIFY(ended.first().first().toString().contains("/top/root”"));
            QCOMPARE(observer->folderCount(), size_t(0));
        }
    }

    void missingFolder() {
        const Scene scene;
        scene.act({"+file"});
        for (const char* path : {"nothing", "file", "file/below"}) {
            QString error;
            const auto observer = DirectoryObserver::startObserving(scene.path(path), true, {}, &error);
            QVERIFY2(!observer && error.contains(scene.path(path)), qPrintable(error));
        }
    }

    void nothingIsToldAfterTheStop() {
        Scene scene;
        scene.start(Scene::Wait::Yes, 200ms);
        scene.act({"/waits"});
        QTRY_COMPARE(scene.observer->folderCount(), size_t(2));  // It was seen but not reported yet.
        scene.observer->stopObserving();
        const int batches = scene.batches;
        Scene other;
        other.start(Scene::Wait::Yes, 300ms);
        QVERIFY(other.settle());
        QCOMPARE(scene.batches, batches);
        scene.observer->stopObserving();
    }

    void deletedByItsBlock() {
        const Scene scene;
        int calls = 0;
        std::unique_ptr<DirectoryObserver> observer;
        const auto block = [&](const auto&) { ++calls, observer.reset(); };
        observer = DirectoryObserver::startObserving(scene.path(), true, block, nullptr, 20ms);
        scene.act({"+f", "-"});
        QTRY_COMPARE(calls, 1);
        QVERIFY(!observer);
    }

    /// The kernel counts watches per user namespace, so this test runs itself in one with a low limit.
    void theLimitOfWatches() {
        if (!qEnvironmentVariableIsSet("RAVELIN_TEST_FEW_WATCHES")) {
            const QString script =
                "echo 5 >/proc/sys/user/max_inotify_watches || exit 99;"
                "RAVELIN_TEST_FEW_WATCHES=1 exec \"$0\" theLimitOfWatches";
            QProcess process;
            process.setProcessChannelMode(QProcess::MergedChannels);
            process.start("unshare", {"-Ur", "sh", "-c", script, QCoreApplication::applicationFilePath()});
            QVERIFY(process.waitForFinished() || process.error() == QProcess::FailedToStart);
            const QByteArray output = process.readAll();
            if (!output.contains("PASS")) QSKIP("no namespace with few watches");
            QVERIFY2(process.exitCode() == 0, output.constData());
            return;
        }
        Scene scene;
        scene.start();
        QSignalSpy problem(scene.observer.get(), &DirectoryObserver::problem);
        QVERIFY(scene.settle({"/0", "/1", "/2", "/3", "/4", "/5", "/6", "/7"}));
        QCOMPARE(problem.count(), 1);
        QVERIFY(problem.first().first().toString().contains("sysctl fs.inotify.max_user_watches="));
        QCOMPARE(scene.observer->folderCount(), size_t(5));
        QVERIFY(scene.settle({"+0/f"}));
        QVERIFY(scene.has("0/f"));
    }
};

QTEST_GUILESS_MAIN(DirectoryObserverTest)
#include "tst_DirectoryObserver.moc"

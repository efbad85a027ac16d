#include "fakes/Table.h"
#include "watch/completion/CompletionWaiter.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace std::chrono_literals;
using completion::Known;
using writercheck::Sight;
using writercheck::Writers;

namespace {

using Make = std::function<void(const QString&)>;

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
    QSignalSpy droppedOut{&waiter, &CompletionWaiter::droppedOut};
};

}  // namespace

class CompletionWaiterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void pausingWriterIsWaitedFor_data() {
        addRows<Known>({{"there before", Known::Unknown},
                        {"created", Known::Created},
                        {"closed by one of two writers", Known::SeenWhole}});
    }
    void pausingWriterIsWaitedFor() {
        const auto [known] = row<Known>();
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
        const auto link = [](const QString& target) {
            return [=](const QString& p) { QFile::link(target, p); };
        };
        const auto makeSocket = [](const QString& p) {
            sockaddr_un address = {AF_UNIX, {}};
            qstrncpy(address.sun_path, qPrintable(p), sizeof address.sun_path);
            const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
            QCOMPARE(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
            ::close(socket);
        };
        addRows<Make>({{"missing", [](const QString&) {}},
                       {"folder", [](const QString& p) { QDir().mkdir(p); }},
                       {"FIFO", [](const QString& p) { ::mkfifo(qPrintable(p), 0600); }},
                       {"device", link("/dev/zero")},
                       {"dangling link", link("/nowhere")},
                       {"loop of links", link("a.mkv")},
                       {"socket", makeSocket}});
    }
    void dropsOut() {
        const auto [make] = row<Make>();
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
            make(path);
            if (round == 1) scene.waiter.wait(path, Known::Created);
            scene.waiter.lookAgain(path);
            QTRY_COMPARE(scene.droppedOut.count(), round);
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
        QSet<QString> names;
        for (const auto& arguments : scene.complete)
            names.insert(arguments.at(0).toString());
        QCOMPARE(names.size(), 2000);
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

    void declaredSizeIsAwaitedIfWritersAreUnknown_data() {
        addRows<Writers, Sight>({{"network", Writers::Some, Sight::None},
                                 {"another user's, there before", Writers::NotKnown, Sight::All}});
    }
    void declaredSizeIsAwaitedIfWritersAreUnknown() {
        const auto [writers, sight] = row<Writers, Sight>();
        Scene scene(kQuick, answering(writers, sight));
        const QString path = scene.write("a.mkv", QByteArray::fromHex("1a45dfa3 80 18538067 e4"));
        scene.waiter.wait(path, Known::Unknown);
        QVERIFY(scene.looked(5));
        scene.write("a.mkv", QByteArray(99, 'x'));
        QVERIFY(scene.looked(5));
        QVERIFY(scene.complete.isEmpty());
        scene.write("a.mkv", "x");
        QTRY_COMPARE(scene.complete.count(), 1);
    }

    void aGrowingFileOnANetworkVolume() {
        QString path;
        int pieces = 0;
        auto sources = answering(Writers::None, Sight::None);
        Scene* growing = nullptr;
        sources.sight = [&](const QString&) {  // Called once per check, so that the file grows before each.
            if (pieces < 20) growing->write("a.mkv", "piece");
            ++pieces;
            return Sight::None;
        };
        Scene scene({1ms, 2ms, 1ms, 1ms}, sources);
        growing = &scene;
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
    }
};

QTEST_GUILESS_MAIN(CompletionWaiterTest)
#include "tst_CompletionWaiter.moc"

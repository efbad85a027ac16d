#include "fakes/FakeTool.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "settings/Keys.h"
#include "support/base/ApplicationInfo.h"
#include "tool/Tool.h"
#include "tool/cage/Cage.h"
#include "tool/cage/Programs.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTcpServer>
#include <QTest>

#include <unistd.h>

namespace {

// What a container or an unprivileged user may not do without a cage either.
const QSet<QString> kOftenDenied = {
    "namespaces", "bpf",         "io_uring",         "trace a process", "keys",
    "netlink",    "listen",      "use capabilities", "dump core",       "set an attribute",
    "connect",    "share memory"};

/// The names of what the tool could do.
QStringList escapes(CageMode mode) {
    TestHome home;
    standardUserDefaults().setOverride(kCageToolKey, static_cast<qint64>(mode));
    const QString source = home.write("movies/source.mkv", "movie");
    const QString output = home.write("out/output.mp4", "");
    const QString secret = home.write("private/secret.txt", "secret");
    home.write("private/victim", "");
    QDir().mkpath(home.path("resources"));
    QFile::link(RAVELIN_PRISONER, home.path("resources/ffmpeg"));
    qputenv("RAVELIN_RESOURCES", home.path("resources").toUtf8());
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);

    // A process that may be attacked without harm.
    QProcess victim;
    victim.start("sleep", {"60"});
    victim.waitForStarted();

    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    const Room room{{source}, {output}, 1 << 20};
    const QString refusal =
        tool::prepare(process,
                      {source, output, secret, home.path("private"), QString::number(server.serverPort()),
                       QString::number(victim.processId())},
                      room);
    if (!refusal.isEmpty()) return {refusal};
    process.start(QIODevice::ReadOnly);
    process.waitForFinished();
    victim.kill();
    victim.waitForFinished();
    QStringList names = QString::fromUtf8(process.readAll()).split('\n', Qt::SkipEmptyParts);
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) names.append("(crashed)");
    return names;
}

}  // namespace

class CageTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void nothingGetsOut() {
        if (!cage::available().isWhole()) QSKIP("This system cannot restrict the tool.");
        const QStringList needed = {"needed: read the source", "needed: write the output", "needed: threads",
                                    "needed: libraries"};
        QCOMPARE(escapes(CageMode::Strict), needed);
    }

    void everythingGetsOutWithoutIt() {
        const QStringList could = escapes(CageMode::Off);
        QFile attempts(RAVELIN_PRISONER_SOURCE);
        QVERIFY(attempts.open(QIODevice::ReadOnly));
        static const QRegularExpression name("attempt\\(\"([^\"]+)\"");
        auto match = name.globalMatch(QString::fromUtf8(attempts.readAll()));
        QVERIFY(match.hasNext());
        while (match.hasNext()) {
            const QString attempted = match.next().captured(1);
            QVERIFY2(could.contains(attempted) || kOftenDenied.contains(attempted), qPrintable(attempted));
        }
    }

    void whatTheKernelStarts_data() {
        addRows<QByteArray, int>({{"script", "#!/bin/sh -e\n", 3},
                                  {"script with a blank", "#! /bin/sh\n", 3},
                                  {"script without interpreter", "#!\n", 1},
                                  {"text", "echo", 0},
                                  {"nothing", "", 0},
                                  {"cut program", QByteArray("\177ELF\2\1\1", 7), 0},
                                  {"script of itself", "#!@\n", 4}});
    }
    void whatTheKernelStarts() {
        auto [contents, count] = row<QByteArray, int>();
        const TestHome home;
        const QString path = home.path("program");
        QCOMPARE(programs::executed(home.write("program", contents.replace("@", path.toUtf8()))).size(),
                 count);
    }

    void tunablesOfMemory_data() {
        addRows<QByteArray, bool>({{"ours", {}, true}, {"the user's", "glibc.malloc.perturb=1", false}});
    }
    void tunablesOfMemory() {
        auto [set, areOurs] = row<QByteArray, bool>();
        const TestHome home;
        const FakeTool tool(home.path("tool"));
        tool.setProbe("echo $GLIBC_TUNABLES");
        if (!set.isEmpty()) qputenv("GLIBC_TUNABLES", set);
        const QByteArray given = tool::report("movie.mkv").output.trimmed();
        qunsetenv("GLIBC_TUNABLES");
        QCOMPARE(given.contains("mmap_threshold"), areOurs);
        QVERIFY(given.contains(set));
    }

    void programsThatChange() {
        const TestHome home;
        const auto put = [&](const QByteArray& contents) { return home.write("program", contents); };
        QVERIFY(programs::flaw(put("text")) == programs::Flaw::NoProgram);
        QVERIFY(programs::flaw(put("#!/bin/sh")) == programs::Flaw::None);
        QVERIFY(programs::flaw(put("text")) == programs::Flaw::NoProgram);
    }
};

QTEST_GUILESS_MAIN(CageTest)
#include "tst_Cage.moc"

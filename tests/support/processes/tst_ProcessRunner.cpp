#include "fakes/Logged.h"
#include "fakes/TestHome.h"
#include "support/base/Format.h"
#include "support/processes/ChildProcess.h"
#include "support/processes/ProcessRunner.h"
#include "support/store/Defaults.h"

#include <QBuffer>
#include <QTest>

#include <csignal>
#include <thread>

class ProcessRunnerTest : public QObject {
    Q_OBJECT

    static QStringList shell(const QString& script, const QStringList& arguments = {}) {
        return QStringList{"/bin/sh", "-c", script, "sh"} + arguments;
    }

private Q_SLOTS:
    void outputsAndStatus() {
        int status = -1;
        for (const Polling polling : {Polling::On, Polling::Off}) {
            const auto text =
                runAsTaskWithTerminationStatus(shell("echo out; echo err >&2; exit 3"), &status, polling);
            QCOMPARE(text.value(), "out\n err\n");
            QCOMPARE(status, 3);
        }
        QCOMPARE(runAsTask({"/bin/true"}).value(), " ");
    }

    void argumentsAreNotInterpreted() {
        QCOMPARE(runAsTask(shell("printf '%s|' \"$@\"", {"a b", "$HOME", "*", "'\"", ""})).value(),
                 "a b|$HOME|*|'\"|| ");
    }

    void fullPipesDoNotBlockTheChild() {
        const auto text = runAsTask(
            shell("head -c 300000 /dev/zero | tr '\\0' e >&2; head -c 300000 /dev/zero | tr '\\0' o"));
        QCOMPARE(text->size(), 600001);
    }

    void childrenReadNothingAndLeadAGroup() {
        const auto text = runAsTask(shell("cat; ps -o pgid= -p $$ | tr -d ' '; echo $$; echo $LC_ALL"));
        const QStringList lines = text->split(u'\n');
        QCOMPARE(lines[0], lines[1]);
        QCOMPARE(lines[2], "C.UTF-8");
    }

    void cannotBeStarted() {
        const TestHome home;
        int status = 42;
        QVERIFY(!runAsTaskWithTerminationStatus({"/nowhere/tool", "a"}, &status, Polling::Off));
        QCOMPARE(status, 42);
        QVERIFY(logged().join(' ').contains("while trying to perform task /nowhere/tool a"));
        QVERIFY_THROWS_EXCEPTION(std::system_error,
                                 runAsTaskWithProgressBlock({"/nowhere/tool"}, [](const auto&) {}));
    }

    void longArgumentsAreLogged() {
        const TestHome home;
        QStringList command = QStringList{"/bin/true"} + QStringList(4, QString(50000, 'x'));
        QVERIFY(runAsTask(command) && logged().isEmpty());  // At the limit.
        QVERIFY(runAsTask(command << "x"));
        QVERIFY(logged().join(' ').contains("task argument size approaching or above limit"));
    }

    void progressPieces() {
        QStringList pieces;
        int status = -1;
        const QString all = runAsTaskWithProgressBlock(
            shell("echo one; echo two >&2; exit 4"), [&](const auto& piece) { pieces.append(piece); },
            &status);
        QCOMPARE(all, "one\ntwo\n");
        QCOMPARE(pieces.join(QString()), all);
        QCOMPARE(status, 4);
    }

    void timeLimit() {
        QProcess quick;
        quick.start("/bin/true", QStringList());
        for (int i = 0; i < 2; ++i)  // The second time, it has already exited.
            QVERIFY(!waitUntilExitWithTimeout(quick, 60));
        QProcess slow;
        slow.start("/bin/sleep", {"60"});
        QVERIFY(waitUntilExitWithTimeout(slow, 0.1));
        QCOMPARE(slow.state(), QProcess::NotRunning);
    }

    void words() {
        QBuffer buffer;
        buffer.setData(QByteArray("\x00\x00\x01\xba\x00\x00\x80\x3f\x01", 9));
        QVERIFY(buffer.open(QIODevice::ReadOnly));
        QCOMPARE(readInt(buffer).value(), 0xBA010000U);
        QCOMPARE(readFloat(buffer).value(), 1.0F);
        QVERIFY(!readInt(buffer));
    }

    /// Must run last: an interruption is permanent.
    void interruptionEndsAWait() {
        std::thread interrupting([] { childprocess::interruptWaits(); });
        QVERIFY(runAsTaskWithTerminationStatus({"/bin/sleep", "60"}, nullptr, Polling::On));
        interrupting.join();
    }
};

QTEST_GUILESS_MAIN(ProcessRunnerTest)
#include "tst_ProcessRunner.moc"

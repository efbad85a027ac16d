#include "fakes/Logged.h"
#include "fakes/TestHome.h"
#include "support/base/Format.h"
#include "support/processes/ChildProcess.h"
#include "support/processes/CollectedOutput.h"
#include "support/processes/ProcessRunner.h"

#include <QBuffer>
#include <QProcess>

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
        // Arguments are not interpreted.
        QCOMPARE(runAsTask(shell("printf '%s|' \"$@\"", {"a b", "$HOME", "*", "'\"", ""})).value(),
                 "a b|$HOME|*|'\"|| ");
    }

    void fullPipesDoNotBlockTheChild() {
        const auto text = runAsTask(shell("for stream in 1 2; do yes | head -c 300000 >&$stream; done"));
        QCOMPARE(text->size(), 600001);

        QProcess process;
        CollectedOutput output;
        childprocess::prepare(process);
        output.takeFrom(process);
        process.start("/bin/sh", {"-c", "echo 1; echo 2 >&2; yes | head -c 3000000; echo 3 >&2; echo 4"});
        QVERIFY(process.waitForStarted());
        output.noteStarted();
        QVERIFY(childprocess::waitForEnd(process, 0, nullptr, &output));
        const QByteArray all = output.take();
        QCOMPARE(all.size(), 3000008);
        QVERIFY(all.startsWith("1\n2\ny\n") && all.endsWith("y\n3\n4\n"));
    }

    void endlessOutput() {
        QProcess process;
        CollectedOutput output;
        childprocess::prepare(process);
        output.takeFrom(process);
        const TestHome home;
        const QString zeros = home.write("zeros", "");
        process.start("/bin/sh", {"-c", "head -c 70000000 /dev/zero; rm $0; exec yes", zeros});
        QVERIFY(process.waitForStarted());
        output.noteStarted();
        while (QFile::exists(zeros))
            output.collect();
        output.collect();
        const qsizetype size = output.take().size();
        QVERIFY(size >= CollectedOutput::kMost);
        QVERIFY(size < CollectedOutput::kMost + CollectedOutput::kCapacity);
        process.kill();
        QVERIFY(process.waitForFinished());
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
        QVERIFY_THROWS_EXCEPTION(std::system_error, runAsTaskWithProgressBlock({"/nowhere/tool"}, {}));
    }

    void longArgumentsAreLogged() {
        const TestHome home;
        QStringList command = QStringList{"/bin/true"} + QStringList(4, QString(50000, 'x'));
        QVERIFY(runAsTask(command) && logged().isEmpty());  // At the limit.
        QVERIFY(runAsTask(command << "x"));
        QVERIFY(logged().join(' ').contains("task argument size approaching or above limit"));
    }

    void numbersAndTimeLimit() {
        QByteArray bytes("\x00\x00\x01\xba\x00\x00\x80\x3f\x01", 9);
        QBuffer buffer(&bytes);
        QVERIFY(buffer.open(QIODevice::ReadOnly));
        QCOMPARE(readInt(buffer).value(), 0xba010000U);
        QCOMPARE(readFloat(buffer).value(), 1.0F);
        QVERIFY(!readInt(buffer));
        QProcess slow;
        slow.start("/bin/sleep", {"60"});
        QVERIFY(waitUntilExitWithTimeout(slow, 0.1));
        QCOMPARE(slow.state(), QProcess::NotRunning);
    }

    /// Last: an interruption is for good.
    void interruptionEndsAWait() {
        std::thread interrupting([] { childprocess::interruptWaits(); });
        QVERIFY(runAsTaskWithTerminationStatus({"/bin/sleep", "60"}, nullptr, Polling::On));
        interrupting.join();
    }
};

QTEST_GUILESS_MAIN(ProcessRunnerTest)
#include "tst_ProcessRunner.moc"

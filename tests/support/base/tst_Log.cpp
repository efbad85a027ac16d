#include "fakes/TestHome.h"
#include "support/base/Files.h"
#include "support/base/Log.h"
#include "support/base/Text.h"
#include "support/reports/Exceptions.h"
#include "support/reports/ProblemReport.h"
#include "support/reports/QuillonLib.h"
#include "support/store/Defaults.h"
#include "support/store/LogRings.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <functional>
#include <sys/wait.h>
#include <unistd.h>

class LogTest : public QObject {
    Q_OBJECT

    using End = std::function<void(TestHome&)>;

    static QString slot(int level, int position) {
        return defaultString(makeString("quillonlib_asl_lev%i_pos%i", level, position)).value_or(QString());
    }

private Q_SLOTS:
    /// Must run first: the positions count through the whole run.
    void ringsOverwriteTheirOldest() {
        const TestHome home;
        for (int i = 0; i < 10; ++i)
            qn_log_level(6, "message %i", i);
        const QRegularExpression form(
            "^date: \\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d \\+0000 message: message 0$");
        QVERIFY(form.match(slot(6, 0)).hasMatch());
        QVERIFY(slot(6, 9).endsWith("message 9"));
        qn_log_level(6, "message 10");
        QVERIFY(slot(6, 0).endsWith("message 10"));
        QVERIFY(slot(6, 1).endsWith("message 1"));
        QVERIFY(slot(5, 0).isEmpty());
    }

    void traceRingHas43Slots() {
        const TestHome home;
        for (int i = 0; i < 44; ++i)
            log_to_prefs(QString::number(i));
        QVERIFY(defaultString("quillonlib_logtoprefs_pos0")->endsWith("message: 43"));
        QVERIFY(defaultString("quillonlib_logtoprefs_pos42")->endsWith("message: 42"));
        QVERIFY(!defaultString("quillonlib_logtoprefs_pos43"));
    }

    void severeMessagesAreSavedSoon() {
        using Urgency = SettingsStore::Urgency;
        const TestHome home;
        QList<Urgency> asked;
        standardUserDefaults().setChangeHandler([&](Urgency urgency) { asked.append(urgency); });
        qn_log_level(5, "usual");
        qn_log_level(4, "more");
        QCOMPARE(asked, QList{Urgency::Later});
        qn_log_level(3, "severe");
        QCOMPARE(asked, (QList{Urgency::Later, Urgency::Soon}));
    }

    void manySevereMessagesAreOneWrite() {
        const TestHome home;
        const QString path = home.path("config/settings.json");
        const QuillonLib library;
        for (int i = 0; i < 300; ++i)
            logError("Error: number %i", i);
        QVERIFY(!QFile::exists(path));
        // Earlier than normal changes, which are saved after five seconds.
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(path), 4000);
        QVERIFY(files::contents(path)->contains("Error: number 299"));
    }

    void captureFile() {
        const TestHome home;
        const QString path = home.path("capture.log");
        qn_log_enablecapturetofile(QUrl::fromLocalFile(path), 0, 5);
        qn_log_level(5, "one");
        qn_log_level(6, "not this one");
        qn_log_level(3, "two");
        qn_log_level(3, "not text: %@", QString(QChar(0xD800)));
        const QString text = QString::fromUtf8(files::contents(path).value());
        const QRegularExpression form(
            "^[A-Z][a-z]{2} \\d\\d \\S.*  Ravelin\\[\\d+\\] <Notice>: one\\n.*<Error>: two\\n$",
            QRegularExpression::DotMatchesEverythingOption);
        QVERIFY2(form.match(text).hasMatch(), qPrintable(text));
        QVERIFY(!text.contains("not this one"));
    }

    void captureFileIsCut_data() {
        QTest::addColumn<quint64>("maximum");
        QTest::addColumn<int>("kept");
        QTest::newRow("to its newest bytes") << quint64{4000} << 4000;
        QTest::newRow("never") << quint64{0} << 10000;
        QTest::newRow("not when it fits") << quint64{10000} << 10000;
    }
    void captureFileIsCut() {
        const TestHome home;
        QFETCH(quint64, maximum);
        QByteArray bytes;
        for (int i = 0; i < 2000; ++i)
            bytes += QByteArray::number(10000 + i);
        const QString path = home.write("capture.log", bytes);
        qn_log_enablecapturetofile(QUrl::fromLocalFile(path), maximum, 0);
        QFETCH(int, kept);
        QCOMPARE(files::contents(path).value(), bytes.right(kept));
    }

    void levelsOutsideTheTable() {
        const TestHome home;
        qn_log_level(256, "odd");
        QVERIFY(slot(256, 0).endsWith("odd"));
    }

    void lastMessagesAreSaved_data() {
        QTest::addColumn<End>("end");
        QTest::addColumn<QByteArray>("message");
        QTest::newRow("fatal") << End([](TestHome&) {
            logInformation("Info: last words");
            fatal({});
        }) << QByteArray("Info: last words");
        QTest::newRow("problem report") << End([](TestHome& home) {
            home.presenter.answer.response = kAlertSecondButton;  // No mail, which would save, too.
            alert_feedback_fatal("name", "details");
        }) << QByteArray("Alert: Fatal Error");
        QTest::newRow("no folder") << End([](TestHome& home) {
            home.write("data");
            const QuillonLib library;
        }) << QByteArray("can not be created");
    }
    void lastMessagesAreSaved() {
        TestHome home;
        QFETCH(End, end);
        const pid_t child = ::fork();
        if (child == 0) {
            end(home);
            ::_exit(2);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 1);
        QFETCH(QByteArray, message);
        const QByteArray saved = files::contents(home.path("config/settings.json")).value_or(QByteArray());
        QVERIFY2(saved.contains(message), saved.constData());
    }

    void uncaughtExceptionsAreRemembered() {
        const TestHome home;
        const pid_t child = ::fork();
        if (child == 0) {
            for (int i = 0; i < 12; ++i)
                qn_defaults_addtoarray("quillonlib_exception_info", QString::number(i), 10);
            installExceptionHandler();
            const auto fail = [] { throw std::runtime_error("broken pipe dream"); };
            [&]() noexcept { fail(); }();
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 1);
        useSettingsFile(home.path("config/settings.json"));
        const QVariantList entries = defaultArray("quillonlib_exception_info").value();
        QCOMPARE(entries.size(), 10);
        QCOMPARE(entries.first(), QVariant("3"));
        QVERIFY(entries.last().toString().contains(" Exception: std::runtime_error broken pipe dream"));
    }
};

QTEST_GUILESS_MAIN(LogTest)
#include "tst_Log.moc"

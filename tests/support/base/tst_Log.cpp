#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "support/base/Files.h"
#include "support/base/Log.h"
#include "support/base/Text.h"
#include "support/reports/Exceptions.h"
#include "support/reports/ProblemReport.h"
#include "support/reports/QuillonLib.h"
#include "support/store/LogRings.h"

#include <QRegularExpression>

#include <functional>
#include <sys/wait.h>
#include <unistd.h>

class LogTest : public QObject {
    Q_OBJECT

    using End = std::function<void(TestHome&)>;

    static QString slot(const char* name) {
        return defaultString("quillonlib_asl_" + QString(name)).value_or("");
    }
    /// Of a child process that ends by what is given; -1: it did not end by itself.
    static int exitStatusOf(const std::function<void()>& end) {
        const pid_t child = ::fork();
        if (child == 0) {
            end();
            ::_exit(2);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private Q_SLOTS:
    /// Must run first: the positions count through the whole run.
    void ringsOverwriteTheirOldest() {
        const TestHome home;
        for (int i = 0; i < 10; ++i)
            qn_log_level(6, "message %i", i);
        const QRegularExpression form("^date: [-\\d]{10} [:\\d]{8} \\+0000 message: message 0$");
        QVERIFY(form.match(slot("lev6_pos0")).hasMatch());
        QVERIFY(slot("lev6_pos9").endsWith("message 9"));
        qn_log_level(6, "message 10");
        QVERIFY(slot("lev6_pos0").endsWith("message 10"));
        QVERIFY(slot("lev6_pos1").endsWith("message 1"));
        QVERIFY(slot("lev5_pos0").isEmpty());
    }

    void traceRingHas43Slots() {
        const TestHome home;
        for (int i = 0; i < 44; ++i)
            log_to_prefs(QString::number(i));
        for (const auto& [slot, last] : {std::pair("pos0", "43"), {"pos42", "42"}, {"pos43", ""}})
            QVERIFY(defaultString(QString("quillonlib_logtoprefs_") + slot).value_or("").endsWith(last));
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
        const QString path = home.write("capture.log", "0123456789");
        const QUrl url = QUrl::fromLocalFile(path);
        for (const auto& [maximum, kept] : {std::pair(0, 10), {10, 10}, {4, 4}}) {
            qn_log_enablecapturetofile(url, maximum, 5);
            QCOMPARE(QFileInfo(path).size(), kept);
        }
        qn_log_level(5, "one");
        qn_log_level(6, "not this one");
        qn_log_level(3, "two");
        const QRegularExpression form(
            "^6789[A-Z][a-z]{2} \\d\\d \\S.*  Ravelin\\[\\d+\\] <Notice>: one\\n[^\\n]*<Error>: two\\n$");
        const QString text = QString::fromUtf8(files::contents(path).value());
        QVERIFY2(form.match(text).hasMatch(), qPrintable(text));
    }

    void lastMessagesAreSaved_data() {
        const auto inform = [](TestHome&) {
            logInformation("Info: last words");
            fatal({});
        };
        const auto report = [](TestHome& home) {
            home.presenter.answer.response = kAlertSecondButton;  // A mail to support would save, too.
            alert_feedback_fatal("name", "details");
        };
        const auto start = [](TestHome& home) {
            home.write("data");
            const QuillonLib library;
        };
        addRows<End, QByteArray>({{"fatal", inform, "Info: last words"},
                                  {"problem report", report, "Alert: Fatal Error"},
                                  {"no folder", start, "can not be created"}});
    }
    void lastMessagesAreSaved() {
        const auto [end, message] = row<End, QByteArray>();
        TestHome home;
        QCOMPARE(exitStatusOf([&] { end(home); }), 1);
        const QByteArray saved = files::contents(home.path("config/settings.json")).value_or(QByteArray());
        QVERIFY2(saved.contains(message), saved.constData());
    }

    void uncaughtExceptionsAreRemembered() {
        const TestHome home;
        QCOMPARE(exitStatusOf([] {
                     for (int i = 0; i < 12; ++i)
                         qn_defaults_addtoarray("quillonlib_exception_info", QString::number(i), 10);
                     installExceptionHandler();
                     const auto fail = [] { throw std::runtime_error("broken pipe dream"); };
                     [&]() noexcept { fail(); }();
                 }),
                 1);
        useSettingsFile(home.path("config/settings.json"));
        const QVariantList entries = defaultArray("quillonlib_exception_info").value();
        QCOMPARE(entries.size(), 10);
        QCOMPARE(entries.first(), QVariant("3"));
        QVERIFY(entries.last().toString().contains(" Exception: std::runtime_error broken pipe dream"));
    }
};

QTEST_GUILESS_MAIN(LogTest)
#include "tst_Log.moc"

#include "fakes/OpenedMail.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "support/base/Files.h"
#include "support/reports/Mail.h"
#include "support/reports/QuillonLib.h"
#include "support/store/Defaults.h"

#include <QDir>

namespace {

constexpr auto kAddress = "support@ravelin.example";

/// Escaping does not change the length of letters.
const QString kLong(100 * 1024, u'x');

QStringList savedFiles() {
    QStringList paths;
    const auto files = QDir(QuillonLib::shared().docDir()).entryInfoList(QDir::Files);
    for (const QFileInfo& file : files)
        paths.append(file.filePath());
    return paths;
}

QString content(const QString& path) {
    return QString::fromUtf8(files::contents(path).value_or("unreadable"));
}

}  // namespace

class MailTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void textsAreEscaped() {
        const TestHome home;
        for (const QString text :
             {"Tom & Jerry #1?.mkv", "a=b&subject=other", "100% %41 %zz", "1 + 1;2,3:4/5", "\"<\\|>`^{}[]\"",
              "two\nlines\r\n\ttab ", "Über 電影 🎬", "it's $(x) !*~", "@support@"}) {
            mail::open({kAddress, text, text, {}});
            const OpenedMail mail(home.desktop.opened.last());
            QCOMPARE(mail.address, kAddress);
            QCOMPARE(mail.subject, text);
            QCOMPARE(mail.body, text);
        }
        QCOMPARE(home.desktop.opened.size(), 9);
        QVERIFY(home.presenter.shown.isEmpty());
    }

    void aMailTooLongForALinkIsAFile() {
        TestHome home;
        const auto fitting = kLong.size() - mail::link(kAddress, "S", {}).size();
        mail::open({kAddress, "S", kLong.first(fitting), {}});
        QCOMPARE(OpenedMail(home.desktop.opened.takeFirst()).body.size(), fitting);
        QVERIFY(savedFiles().isEmpty());
        const QString body = kLong.first(fitting - 1) + u'ß';
        mail::open({kAddress, "S", body, {}});
        const QString path = home.desktop.revealed.last();
        QVERIFY(path.endsWith("/Documents/Ravelin Support Request.txt"));
        QCOMPARE(content(path), "To: support@ravelin.example\nSubject: S\n\n" + body);
        QVERIFY(OpenedMail(home.desktop.opened.last()).body.contains(u'"' + path + u'"'));
        QVERIFY(home.presenter.shown.isEmpty());
    }

    void withoutAMailProgram_data() {
        addRows<QString, bool, bool>(  // body, has a clipboard, can save
            {{"clipboard", "short", true, true},
             {"file", "short", false, true},
             {"nothing", "short", false, false},
             {"long: file", kLong, false, true},
             {"long: only clipboard", kLong, true, false}});
    }
    void withoutAMailProgram() {
        const auto [body, hasClipboard, canSave] = row<QString, bool, bool>();
        TestHome home;
        home.desktop.opens = false;
        home.desktop.hasClipboard = hasClipboard;
        if (!canSave)
            home.write(QDir(home.path()).relativeFilePath(QuillonLib::shared().suppDir() + "/../Documents"));
        mail::open({kAddress, "S", body, {}});
        const QString text = "To: support@ravelin.example\nSubject: S\n\n" + body;
        QCOMPARE(home.presenter.shown.size(), 1);
        const Alert& told = home.presenter.shown.first();
        QVERIFY(told.message.contains(kAddress));
        QCOMPARE(home.desktop.clipboard, hasClipboard ? text : QString());
        const QStringList files = savedFiles();
        QCOMPARE(files.size(), !hasClipboard && canSave ? 1 : 0);
        if (files.size() == 1) {
            QVERIFY(told.message.contains(files.first()));
            QCOMPARE(content(files.first()), text);
        }
        QCOMPARE(told.value.toString(), hasClipboard || canSave ? QString() : text);
    }

    void encodedBodyIsShownFirst() {
        TestHome home;
        setDefaultString("key", "ü & \"");
        const auto message =
            mail::withSettings(kAddress, "S", [](const QString& settings) { return "> " + settings; });
        home.presenter.answer.response = kAlertSecondButton;
        mail::open(message);
        QVERIFY(home.desktop.opened.isEmpty());
        home.presenter.answer.response = kAlertFirstButton;
        mail::open(message);
        QCOMPARE(home.presenter.shown.size(), 2);
        const Alert& shown = home.presenter.shown.last();
        QCOMPARE(shown.control, AlertControl::OutputText);
        const QString settings = content(QuillonLib::shared().prefsPath());
        QVERIFY(settings.contains("ü & \\\""));
        QCOMPARE(shown.value.toString(), "To: support@ravelin.example\nSubject: S\n\n> " + settings);
        const QString sent = OpenedMail(home.desktop.opened.first()).body;
        QCOMPARE(sent, "> " + QString::fromLatin1(settings.toUtf8().toBase64()));
    }
};

QTEST_GUILESS_MAIN(MailTest)
#include "tst_Mail.moc"

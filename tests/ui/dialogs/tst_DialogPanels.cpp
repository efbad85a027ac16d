#include "fakes/Table.h"
#include "ui/dialogs/DialogPanels.h"

#include <QtWidgets>

class DialogPanelsTest : public QObject {
    Q_OBJECT

public:
    static void initMain() {
        static const QTemporaryDir home;  // The panel stores its own settings.
        qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
        qputenv("QT_QPA_PLATFORM", "offscreen");
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    }

private:
    /// The panel that is open over `window`, with its name field ready.
    static QFileDialog* open(const QWidget& window) {
        const auto dialogs = window.findChildren<QFileDialog*>();
        const auto found = std::ranges::find_if(dialogs, &QWidget::isVisible);
        if (found == dialogs.end() || !QTest::qWaitForWindowExposed(*found)) qFatal("no panel");
        return *found;
    }
    static void type(const QFileDialog* dialog, const QString& name, Qt::Key answer = Qt::Key_Return) {
        auto* field = dialog->findChild<QLineEdit*>("fileNameEdit");
        if (!name.isEmpty()) QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(field, name);
        QTest::keyClick(field, answer);
    }
    void write(const QString& name) const { QVERIFY(QFile(m_folder->filePath(name)).open(QFile::WriteOnly)); }

private Q_SLOTS:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_window = std::make_unique<QWidget>();
        m_window->show();
        m_panels = std::make_unique<DialogPanels>();
        m_panels->setMainWindow(m_window.get());
        m_answers.clear();
    }

    void files() {
        write("a.mkv");
        write("b.mkv");
        m_panels->chooseFiles({"mkv", "m2ts"}, [this](const QStringList& paths) { m_answers += paths; });
        const QPointer<QFileDialog> dialog = open(*m_window);
        QCOMPARE(dialog->windowModality(), Qt::WindowModal);
        QCOMPARE(dialog->nameFilters(),
                 (QStringList{"Movies and subtitles (*.mkv *.[mM][kK][vV] *.m2ts *.[mM]2[tT][sS])",
                              "All files (*)"}));
        // Like a desktop that matches case-sensitively.
        const QStringList patterns = dialog->nameFilters().first().section(u'(', 1).chopped(1).split(u' ');
        const auto isShown = [&](const QString& name) {
            return std::ranges::any_of(patterns, [&](const QString& pattern) {
                return QRegularExpression::fromWildcard(pattern, Qt::CaseSensitive).match(name).hasMatch();
            });
        };
        for (const char* name : {"film.mkv", "Film.Mkv", "FILM.MKV", "Film.M2ts"})
            QVERIFY2(isShown(name), name);
        QVERIFY(!isShown("film.mkv.txt"));
        dialog->setDirectory(m_folder->path());
        type(dialog, "\"a.mkv\" \"b.mkv\"");
        QTRY_VERIFY(!dialog);
        QCOMPARE(m_answers, (QStringList{m_folder->filePath("a.mkv"), m_folder->filePath("b.mkv")}));
    }

    void folder() {
        QWidget preferences;
        preferences.show();
        m_panels->setPreferencesWindow(&preferences);
        QVERIFY(QDir(m_folder->path()).mkdir("sub"));
        m_panels->chooseFolder(FilePanels::Over::Preferences, m_folder->path(), answer());
        const QPointer<QFileDialog> dialog = open(preferences);
        type(dialog, "sub");
        QTRY_VERIFY(!dialog);
        QCOMPARE(m_answers, QStringList{m_folder->filePath("sub")});
    }

    void saved_data() {
        addRows<QString, QString, bool>({{"as filled in", "", "Movie.mp4", false},
                                         {"without extension", "new", "new.mp4", false},
                                         {"with it", "new.MP4", "new.MP4", false},
                                         {"a point is no extension", "Dr. Who", "Dr. Who.mp4", false},
                                         {"replaced", "old", "old.mp4", true},
                                         {"replaced, with a point", "Dr. No", "Dr. No.mp4", true}});
    }
    void saved() {
        const auto [typed, name, asksFirst] = row<QString, QString, bool>();
        write("old.mp4");
        write("Dr. No.mp4");
        m_panels->saveFile(m_folder->path(), "Movie.mp4", "mp4", answer());
        // If it would replace a file, No returns to the panel.
        auto replies = QList{QMessageBox::No, QMessageBox::Yes}.first(asksFirst ? 2 : 0);
        QTimer watcher;
        connect(&watcher, &QTimer::timeout, this, [&] {
            auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (question && question->isVisible() && !replies.isEmpty())
                QTest::mouseClick(question->button(replies.takeFirst()), Qt::LeftButton);
        });
        watcher.start(1);
        for (int round = asksFirst ? 2 : 1; round > 0; --round) {
            QTRY_VERIFY(qobject_cast<QFileDialog*>(QApplication::activeModalWidget()));
            type(open(*m_window), typed);
            QTRY_VERIFY(replies.size() < round);
        }
        QTRY_COMPARE(m_answers, QStringList{m_folder->filePath(name)});
    }

    void cancelled() {
        m_panels->saveFile(m_folder->path(), "Movie.mp4", "mp4", answer());
        const QPointer<QFileDialog> dialog = open(*m_window);
        type(dialog, "new", Qt::Key_Escape);
        QTRY_VERIFY(!dialog);
        m_panels->chooseFolder(FilePanels::Over::MainWindow, {}, answer());
        m_window.reset();
        m_panels->chooseFolder(FilePanels::Over::MainWindow, {}, answer());
        m_panels.reset();  // Closes an open panel, too.
        QVERIFY(QApplication::topLevelWidgets().isEmpty());
        QVERIFY(m_answers.isEmpty());
    }

private:
    std::function<void(const QString&)> answer() {
        return [this](const QString& path) { m_answers.append(path); };
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<DialogPanels> m_panels;
    QStringList m_answers;
};

QTEST_MAIN(DialogPanelsTest)
#include "tst_DialogPanels.moc"

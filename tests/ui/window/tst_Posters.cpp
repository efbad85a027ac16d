#include "fakes/WindowedApplication.h"
#include "ui/window/JobListModel.h"
#include "ui/window/PosterFrame.h"
#include "ui/window/Posters.h"

#include <QSignalSpy>

namespace {

constexpr int kPatience = 60000;  // ms
constexpr int kRows = 60;

/// A paused queue of many movies with a tool that takes white posters, but none of movies whose names say so.
class Gallery : public WindowedApplication {
public:
    Gallery() {
        const QString script = write("posters/ffmpeg", R"sh(#!/bin/sh
while [ "$1" != -i ]; do shift; done
echo "$2" >> "$0.calls"
case "$2" in *none*) exit 1 ;; *slow*) while :; do sleep 0.1; done ;; esac
exec head -c 15552 /dev/zero
)sh");
        QFile::setPermissions(script, QFile::ReadOwner | QFile::ExeOwner);
        qputenv("RAVELIN_RESOURCES", path("posters").toUtf8());
        switchPosters(true);
        queue().pauseContinueClicked(true);
    }
    static void switchPosters(bool on) {
        standardUserDefaults().setOverride(kShowPostersKey, qint64{on});
        setDefaultInt(kShowPostersKey, on ? 1 : 0);
    }
    void fill(const QString& firstName = "0.mkv") {
        for (int row = kRows; row > 1; --row)
            add(QString("%1.mkv").arg(row - 1));
        add(firstName);
    }
    Posters& posters() const { return *list().findChild<Posters*>(); }
    QPixmap posterOf(int row) const {
        return list().model()->index(row, 0).data(JobListModel::PosterRole).value<QPixmap>();
    }
    bool hasPoster(int row) const { return !posterOf(row).isNull(); }
    QList<int> rowsWithPosters() const {
        QList<int> rows;
        for (int row = 0; row < kRows; ++row)
            if (hasPoster(row)) rows.append(row);
        return rows;
    }
    QList<int> rowsInView() const {
        QList<int> rows;
        for (int row = 0; row < kRows; ++row)
            if (list().visualRect(list().model()->index(row, 0)).intersects(list().viewport()->rect()))
                rows.append(row);
        return rows;
    }
    qsizetype calls(const QString& name) const {
        QFile file(path("posters/ffmpeg.calls"));
        return file.open(QIODevice::ReadOnly) ? file.readAll().count(QFile::encodeName('/' + name + '\n'))
                                              : 0;
    }
};

}  // namespace

class PostersTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void rowsInViewHaveThem() {
        Gallery app;
        app.fill();
        QTRY_COMPARE_WITH_TIMEOUT(app.rowsWithPosters(), app.rowsInView(), kPatience);
        QVERIFY(!app.hasPoster(kRows - 1));
        QCOMPARE(app.posterOf(0).deviceIndependentSize(), QSizeF(PosterFrame::kSize));

        app.list().setFocus();
        QTest::keyClick(&app.list(), Qt::Key_End);
        QTRY_VERIFY_WITH_TIMEOUT(app.hasPoster(kRows - 1), kPatience);
        QVERIFY(!app.hasPoster(kRows / 2));
        QCOMPARE(app.calls("0.mkv"), 1);

        Gallery::switchPosters(false);
        QVERIFY(app.rowsWithPosters().isEmpty());
    }

    void oneThatFailsIsNotTriedAgain() {
        Gallery app;
        app.fill("none.mkv");
        QTRY_VERIFY_WITH_TIMEOUT(app.hasPoster(app.rowsInView().last()), kPatience);
        QVERIFY(!app.hasPoster(0));
        const qsizetype before = app.calls("none.mkv");
        app.add("more.mkv");  // Another look at the rows.
        QTRY_VERIFY_WITH_TIMEOUT(app.hasPoster(0), kPatience);
        QCOMPARE(app.calls("none.mkv"), before);
        QVERIFY(app.presenter.shown.isEmpty() && app.status.isEmpty());
    }

    void probesGoFirst() {
        Gallery app;
        // The tool's report is no report: the probe lasts.
        app.delegate.openFiles({app.write("slow.mkv")});
        QTRY_VERIFY_WITH_TIMEOUT(app.calls("slow.mkv") == 1, kPatience);
        app.fill();
        constexpr int kAfterTheLook = 500;  // ms
        QTimer later;
        const QSignalSpy looked(&later, &QTimer::timeout);
        later.start(kAfterTheLook);
        QTRY_VERIFY_WITH_TIMEOUT(!looked.isEmpty(), kPatience);
        QCOMPARE(app.calls("0.mkv"), 0);
        app.sheet().cancelAdd();
        QTRY_VERIFY_WITH_TIMEOUT(app.hasPoster(0), kPatience);
    }

    void theMovieThatIsAskedFor() {
        Gallery app;
        const QString path = app.write("sheet.mkv");
        const QSignalSpy changed(&app.posters(), &Posters::changed);
        QVERIFY(app.posters().poster(path, 10).isNull());
        QTRY_COMPARE_WITH_TIMEOUT(changed.count(), 1, kPatience);
        QCOMPARE(changed.first().first().toString(), path);
        QVERIFY(!app.posters().poster(path, 10).isNull());
    }

    void theEndWaitsForNone() {
        Gallery app;
        app.fill("slow.mkv");
        QTRY_VERIFY_WITH_TIMEOUT(app.calls("slow.mkv") == 1, kPatience);
        app.delegate.terminate(false);
        app.posters().look();
        QVERIFY(AppDelegate::isTerminated());
        QCOMPARE(QProcess::execute("pgrep", {"-f", app.path("slow.mkv")}), 1);  // None.
        QVERIFY(app.rowsWithPosters().isEmpty());
    }
};

QTEST_MAIN(PostersTest)
#include "tst_Posters.moc"

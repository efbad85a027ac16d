#include "fakes/WindowedApplication.h"
#include "ui/window/JobListModel.h"
#include "ui/window/QueueSummary.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

class JobListTest : public QObject {
    Q_OBJECT

public:
    static void initMain() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

private Q_SLOTS:
    void theModelFollowsTheQueue() {
        WindowedApplication app;
        JobListModel model(app.queue());
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        app.tool.setConversion(FakeTool::waitFor(app.path("go")));
        app.add("a.mkv");
        setDefaultInt("InsertJobsAtBottom", 1);
        app.add("b.mkv");
        setDefaultInt("InsertJobsAtBottom", 0);
        app.add("c.mkv");
        QStringList names;
        for (int row = 0; row < model.rowCount(); ++row)
            names.append(model.index(row).data().toString());
        QCOMPARE(names, QStringList({"c.mkv", "a.mkv", "b.mkv"}));
        QCOMPARE(queueSummary(app.queue()), "1 converting, 2 queued");

        // The running job moved down; its tick is told of its row alone.
        QSignalSpy changed(&model, &JobListModel::dataChanged);
        Q_EMIT app.job(1)->progressed();
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().at(0).toModelIndex().row(), 1);
        QCOMPARE(changed.first().at(1).toModelIndex().row(), 1);
        app.job(0)->remove();
        Q_EMIT app.job(0)->progressed();
        QCOMPARE(changed.last().at(0).toModelIndex().row(), 0);
        app.write("go");
        QTRY_COMPARE_WITH_TIMEOUT(app.queue().jobCountWithState(JobState::Finished), 2, 30000);
        app.queue().cleanClicked();
        QCOMPARE(model.rowCount(), 0);
    }

    void partsOfARowDoNotOverlap_data() {
        QTest::addColumn<int>("width");
        QTest::addColumn<Qt::LayoutDirection>("direction");
        QTest::addColumn<int>("points");
        QTest::newRow("narrow") << 400 << Qt::LeftToRight << 9;
        QTest::newRow("wide") << 1600 << Qt::LeftToRight << 9;
        QTest::newRow("right to left") << 640 << Qt::RightToLeft << 9;
        QTest::newRow("large font") << 640 << Qt::LeftToRight << 22;
    }
    void partsOfARowDoNotOverlap() {
        QFETCH(const int, width);
        QFETCH(const Qt::LayoutDirection, direction);
        QFETCH(const int, points);
        QFont font = QApplication::font();
        font.setPointSize(points);
        const QFontMetrics metrics(font);
        const QRect row(0, 144, width, jobrow::height(metrics));
        QVERIFY(row.height() >= 72);
        const jobrow::Layout layout = jobrow::layout(row, metrics, metrics, direction);
        QList<QRect> parts{layout.icon, layout.name, layout.status, layout.bar};
        parts.append(QList<QRect>(layout.buttons.begin(), layout.buttons.end()));
        for (qsizetype i = 0; i < parts.size(); ++i) {
            QVERIFY(row.contains(parts[i]));
            for (qsizetype j = i + 1; j < parts.size(); ++j)
                QVERIFY(!parts[i].intersects(parts[j]));
        }
        QCOMPARE(layout.icon.x() < layout.name.x(), direction == Qt::LeftToRight);
        QCOMPARE(layout.name.x() < layout.rectOf(jobrow::Button::Remove).x(), direction == Qt::LeftToRight);
    }

    void buttonsByState_data() {
        QTest::addColumn<JobState>("state");
        QTest::addColumn<QString>("enabled");
        QTest::newRow("queued") << JobState::Queued << "p r";
        QTest::newRow("converting") << JobState::Converting << "p r v";
        QTest::newRow("paused") << JobState::Paused << "p r";
        QTest::newRow("finished") << JobState::Finished << "r v";
        QTest::newRow("failed") << JobState::Failed << "r v";
    }
    void buttonsByState() {
        QFETCH(const JobState, state);
        QFETCH(const QString, enabled);
        QStringList found;
        if (jobrow::isEnabled(jobrow::Button::PauseContinue, state)) found.append("p");
        if (jobrow::isEnabled(jobrow::Button::Remove, state)) found.append("r");
        if (jobrow::isEnabled(jobrow::Button::Reveal, state)) found.append("v");
        QCOMPARE(found.join(' '), enabled);
    }
};

QTEST_MAIN(JobListTest)
#include "tst_JobList.moc"

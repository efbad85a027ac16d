#include "fakes/Table.h"
#include "fakes/WindowedApplication.h"
#include "ui/look/TabularText.h"
#include "ui/window/JobListModel.h"
#include "ui/window/QueueSummary.h"

#include <QAbstractItemModelTester>
#include <QPainter>
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

        // The running job has moved down; its progress is reported for its row only.
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
        addRows<int, Qt::LayoutDirection, int>({
            {"narrow", 400, Qt::LeftToRight, 9},
            {"wide", 1600, Qt::LeftToRight, 9},
            {"right to left", 640, Qt::RightToLeft, 9},
            {"large font", 640, Qt::LeftToRight, 22},
        });
    }
    void partsOfARowDoNotOverlap() {
        const auto [width, direction, points] = row<int, Qt::LayoutDirection, int>();
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

    void tickingDigitsPushNothingAside() {
        const auto drawn = [](const auto& draw) {
            QImage image(300, 30, QImage::Format_Mono);
            image.fill(1);
            QPainter painter(&image);
            draw(painter);
            return image;
        };
        constexpr int kDigit = 40;
        QCOMPARE(drawn([](QPainter& p) {
                     drawWithDigitsOf(kDigit, p, {0, 0, 300, 30}, "09: in 8");
                 }),
                 drawn([](QPainter& p) {
                     const int between = p.fontMetrics().horizontalAdvance(": in ");
                     const int centred = Qt::AlignVCenter | Qt::AlignHCenter;
                     p.drawText(QRect(0, 0, kDigit, 30), centred, "0");
                     p.drawText(QRect(kDigit, 0, kDigit, 30), centred, "9");
                     p.drawText(QRect(2 * kDigit, 0, 200, 30), Qt::AlignVCenter, ": in ");
                     p.drawText(QRect(2 * kDigit + between, 0, kDigit, 30), centred, "8");
                 }));
    }

    void buttonsByState() {
        const auto enabled = [](JobState state) {
            QString letters;
            if (jobrow::isEnabled(jobrow::Button::PauseContinue, state)) letters += 'p';
            if (jobrow::isEnabled(jobrow::Button::Remove, state)) letters += 'r';
            if (jobrow::isEnabled(jobrow::Button::Reveal, state)) letters += 'v';
            return letters;
        };
        QCOMPARE(enabled(JobState::Queued), "pr");
        QCOMPARE(enabled(JobState::Converting), "prv");
        QCOMPARE(enabled(JobState::Paused), "pr");
        QCOMPARE(enabled(JobState::Finished), "rv");
        QCOMPARE(enabled(JobState::Failed), "rv");
    }
};

QTEST_MAIN(JobListTest)
#include "tst_JobList.moc"

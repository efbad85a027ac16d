#include "app/intake/FileIntake.h"
#include "app/queue/JobQueue.h"
#include "app/queue/QueueProgress.h"
#include "fakes/FakeTool.h"
#include "fakes/InstantProof.h"
#include "fakes/TestHome.h"
#include "settings/Keys.h"

namespace {

struct NoFiles : WaitingFiles {
    bool areWaiting() const override { return false; }
    void cancelAdd() override {}
};

/// A queue whose tool converts a second of a movie in a tenth of a second. Its time is that of the tool, so
/// that a busy machine does not count.
class Queue : public TestHome {
public:
    Queue() : tool(path()), progress(queue, [this] { return milliseconds(); }) {
        tool.setConversion(R"(echo movie > "$destination"
size=$((${destination//[^0-9]/})); tenth=0
while [ $tenth -lt $size ]; do
    tenth=$((tenth + 1)); read -rt 0.1 -u 9 9<>"$folder/nothing"; printf . >> "$folder/ticks"
    echo "out_time_ms=${tenth}000000" >> "$progress"
done
)");
    }
    qint64 milliseconds() const { return QFileInfo(path("resources/ticks")).size() * 100; }
    /// A movie of that many seconds; its size is proportional.
    void add(int seconds) {
        MKVFileInfo info;
        info.fileName = QString::number(seconds) + ".mkv";
        info.fileURL = QUrl::fromLocalFile(write(info.fileName));
        info.destinationURL = QUrl::fromLocalFile(path(QString::number(seconds) + ".out"));
        info.runtimeSeconds = seconds;
        info.fileSize = static_cast<quint64>(seconds) * 1000000;
        info.videoTrackCodec = "h264";
        QVERIFY(queue.addJob(std::make_unique<ConversionJob>(queue, std::move(info), 0)));
    }

    FakeTool tool;
    NoFiles files;
    JobQueue queue{files};
    QueueProgress progress;
};

}  // namespace

class QueueProgressTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void estimateIsNeverFarOff() {
        Queue stage;
        stage.queue.pauseContinueClicked(true);
        for (const int seconds : {40, 30, 25, 20, 15, 10})
            stage.add(seconds);
        QCOMPARE(stage.progress.text(), "0 of 6");
        struct Sample {
            qint64 time;
            double fraction;
            double left;
        };
        QList<Sample> samples;
        connect(&stage.progress, &QueueProgress::changed, this, [&] {
            const auto left = stage.progress.secondsLeft();
            const auto fraction = stage.progress.fraction();
            if (stage.milliseconds() < 3000) QVERIFY(!left);
            if (left && fraction && *fraction > 0.1 && !stage.progress.isFinishing())
                samples.append({stage.milliseconds(), *fraction, *left});
        });
        stage.queue.pauseContinueClicked(true);
        QTRY_COMPARE_WITH_TIMEOUT(stage.queue.jobCountWithState(JobState::Finished), 6, 120000);
        const qint64 end = stage.milliseconds();
        QVERIFY(samples.size() > 5);
        for (const Sample& sample : samples) {
            const double really = static_cast<double>(end - sample.time) / 1000;
            // The progress is read once a second.
            const QString what =
                QString("%1 %: %2 s, really %3 s").arg(sample.fraction * 100).arg(sample.left).arg(really);
            QVERIFY2(sample.left < really * 1.5 + 1 && sample.left > really / 1.5 - 1, qPrintable(what));
        }
        QVERIFY(stage.progress.text().isEmpty() && !stage.progress.fraction());
    }
};

QTEST_GUILESS_MAIN(QueueProgressTest)
#include "tst_QueueProgress.moc"

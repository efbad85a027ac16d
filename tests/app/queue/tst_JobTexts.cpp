#include "app/queue/JobDetails.h"
#include "app/queue/JobTexts.h"
#include "convert/ConversionJob.h"
#include "fakes/FakeController.h"
#include "fakes/FakeTool.h"
#include "fakes/InstantProof.h"
#include "fakes/TestHome.h"

#include <QTest>

class JobTextsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void fromQueuedToFinished() {
        const TestHome home;
        const FakeTool tool(home.path());
        tool.setConversion("echo movie > \"$destination\"; echo 'a warning' >&2\n");
        FakeController controller;
        ConversionJob job(controller, movie(home), 0);
        QCOMPARE(jobNote(job).text(), "H.264 copied, AC3 to AAC stereo, 1 subtitle(s)");
        QCOMPARE(jobDetails(job).state, "Queued");
        QCOMPARE(tracks(job).first(3),
                 QStringList({"Picture: H.264 (copied)", "Sound: English AC3 (becomes AAC stereo, 128 kb/s)",
                              "Sound: German DTS 5.1 (left out)"}));

        Receipt receipt;
        receipt.verdict = ProofVerdict::Damaged;
        receipt.damage = {{.from = 751, .to = 760, .what = "14 pictures are missing"}};
        receipt.tracks.resize(1);
        receipt.tracks[0].plan.kind = StreamKind::Video;
        receipt.tracks[0].count = 986;
        receipt.tracks[0].sourceCount = 1000;
        receipt.notes = {"a note"};
        receipt.outputBytes = 3 * 1024 * 1024;
        proveWith(job, receipt);
        job.start();
        QCOMPARE(jobNote(job), JobNote());
        QTRY_COMPARE_WITH_TIMEOUT(job.state(), JobState::Finished, 20000);
        QCOMPARE(jobNote(job).verdict, JobNote::Verdict::Damaged);
        QCOMPARE(jobNote(job).text(), "Damaged at 0:12:31: 14 pictures are missing · 3.0 MiB in " +
                                          QFileInfo(home.path()).fileName() +
                                          " · H.264, English AAC stereo, 1 subtitle(s)");
        const JobDetails details = jobDetails(job);
        QCOMPARE(details.tracks[0].remark, "986 of 1,000 pictures");
        QVERIFY(details.tracks[0].isIncomplete && !details.tracks[1].isIncomplete);
        const QString text = plainText(details);
        for (const char* part : {"/movie.srt", "/out.mp4", "Status: Finished", "left out (only one audio",
                                 "Damaged at 0:12:31", "a note", "ffmpeg ", "a warning"})
            QVERIFY2(text.contains(part), qPrintable(part + text));
    }

    void failed() {
        const TestHome home;
        const FakeTool tool(home.path());
        tool.setConversion("exit 1\n");
        FakeController controller;
        ConversionJob job(controller, movie(home), 0);
        job.start();
        QTRY_COMPARE_WITH_TIMEOUT(job.state(), JobState::Failed, 20000);
        QCOMPARE(jobNote(job).verdict, JobNote::Verdict::Failed);
        QCOMPARE(jobNote(job).text(), "The subtitle file can't be read");
    }

private:
    static MKVFileInfo movie(const TestHome& home) {
        MKVFileInfo info;
        info.fileName = "movie.mkv";
        info.fileURL = QUrl::fromLocalFile(home.write("movie.mkv", "source"));
        info.subtitleFileURL = QUrl::fromLocalFile(home.path("movie.srt"));
        info.destinationURL = QUrl::fromLocalFile(home.path("out.mp4"));
        info.runtimeSeconds = 10;
        info.videoTrackCodec = "h264";
        info.audioTrackInformation = {AudioEntry::make(1, "eng", "ac3", false, 48000),
                                      AudioEntry::make(2, "ger", "dts", true, 48000)};
        return info;
    }
    static QStringList tracks(const ConversionJob& job) {
        QStringList tracks;
        for (const DetailTrack& track : jobDetails(job).tracks)
            tracks.append(track.kind + ": " + track.source + " (" + track.outcome + ')');
        return tracks;
    }
};

QTEST_GUILESS_MAIN(JobTextsTest)
#include "tst_JobTexts.moc"

#include "fakes/FakeTool.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "probe/MKVFileInfo.h"

#include <QFile>

#include <cstddef>
#include <elf.h>
#include <thread>

class MKVFileInfoTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void record() {
        const TestHome home;
        const FakeTool tool(home.path());
        tool.setReport(FakeTool::report(
            "    Stream #0:1(eng): Audio: ac3, 48000 Hz, 5.1(side)\n    Stream #0:2: Subtitle: subrip\n" +
            QByteArray("      title           : larger than a pipe\n").repeated(12000)));
        const QUrl url = QUrl::fromLocalFile(home.write("A %movie?.mkv", "12345"));
        const auto record = MKVFileInfo::initWithURL(url).value();
        QCOMPARE(record.fileName, "A %movie?.mkv");
        QCOMPARE(record.fileURL, url);
        QCOMPARE(record.fileSize, 5U);
        QCOMPARE(record.runtimeSeconds.value(), 10);
        QCOMPARE(record.description(),
                 "\naudioTrackInformation: (\n    \"#1: eng (ac3) [5.1]\"\n)"
                 "\ninformationString: Duration: 00:00:10  Bitrate: 4712 kb/s  Resolution: 1920x1080  "
                 "Audiotracks: 1 (1)"
                 "\nfileName: A %movie?.mkv\nruntimeSeconds: 10\nfileSize: 5\nsubtitleTrackIDs: (\n    2\n)"
                 "\nsubtitleFileURL: (null)");
        QCOMPARE(MKVFileInfo::durationOfFile(url), 10);
    }

    void reportsThatAreNone() {
        for (const QByteArray& report : {FakeTool::report("\xff\xfe"), QByteArray("x.mkv: Invalid\n")}) {
            TestHome home;
            const FakeTool tool(home.path());
            tool.setReport(report);
            QVERIFY(!MKVFileInfo::initWithURL(QUrl::fromLocalFile(home.write("x.mkv"))));
            QVERIFY(home.presenter.shown.isEmpty());  // It comes a moment later.
            QTRY_COMPARE(home.presenter.shown.size(), 1);
            QVERIFY(home.presenter.shown.first().message.startsWith(
                "Warning: the file 'x.mkv' doesn't seem to be a valid MKV and can't be converted by Ravelin."));
        }
    }

    void messagesReachTheMainThreadInOrder() {
        TestHome home;
        const FakeTool tool(home.path());
        tool.setReport(
            "  Duration: 00:00:10.00, start: 0, bitrate: 1 kb/s\n"
            "    Stream #0:0: Audio: aac (HE-AAC), 48000 Hz, stereo\n"
            "    Stream #0:1: Video: hevc, 3840x2160\n");
        const QUrl url = QUrl::fromLocalFile(home.write("x.mkv"));
        std::thread([&] { MKVFileInfo::initWithURL(url); }).join();
        QVERIFY(home.presenter.shown.isEmpty());
        QTRY_COMPARE(home.presenter.keys(),
                     (QStringList{"hevcvideowarning", "warningheaac", "warningtoohighres"}));
        QCOMPARE(home.presenter.shown.first().suppressionTitle, "Don't warn again");
    }

    void equalPartsAreShared() {
        const auto recordOf = [](const QByteArray& title) {
            const TestHome home;
            const FakeTool tool(home.path());
            tool.setReport(FakeTool::report("    Stream #0:1(eng): Audio: ac3, 48000 Hz, 5.1(side)\n" +
                                            QByteArray("    Metadata:\n      title           : ") + title +
                                            "\n"));
            return MKVFileInfo::initWithURL(QUrl::fromLocalFile(home.write("x.mkv"))).value();
        };
        const MKVFileInfo first = recordOf("One");
        MKVFileInfo second = recordOf("Two");
        const MovieContents before = second.contents;
        second.shareWith(first);
        QCOMPARE(second.contents, before);
        QVERIFY(second.audioTrackInformation.isSharedWith(first.audioTrackInformation));
        QVERIFY(second.contents.streams[1].codec.isSharedWith(first.contents.streams[1].codec));
        MKVFileInfo third = recordOf("Two");
        third.shareWith(second);
        QVERIFY(third.contents.streams.isSharedWith(second.contents.streams));
    }

    void aliasesAreNotProbed() {
        TestHome home;
        QFile::link(home.path("gone.mkv"), home.path("alias.mkv"));
        const MKVFileInfo::Probe probe = MKVFileInfo::probe(QUrl::fromLocalFile(home.path("alias.mkv")));
        QVERIFY(!probe.record);
        QCOMPARE(probe.verdicts.size(), 1U);
        QCOMPARE(probe.verdicts[0].key, "warningalias");
        QVERIFY(probe.verdicts[0].message.startsWith("The file 'alias.mkv' is an alias."));
    }

    void toolTrouble_data() {
        QFile own("/proc/self/exe");
        QVERIFY(own.open(QIODevice::ReadOnly));
        const QByteArray program = own.read(4096);
        QByteArray otherProgram = program;
        constexpr int kMachine = offsetof(Elf64_Ehdr, e_machine);
        otherProgram[kMachine] = otherProgram[kMachine] == EM_X86_64 ? EM_386 : EM_X86_64;
        addRows<QByteArray, bool, QString>(  // tool (null: none), executable, message
            {{"missing", QByteArray(), false, "The conversion tool is missing"},
             {"not executable", "#!/bin/sh\n", false, "because it is not executable"},
             {"not startable", "#!/no/such/interpreter\n", true,
              "A basic system capability failed (posix_spawn)"},
             {"text", "ffmpeg", true, "because it is not a program"},
             {"empty", "", true, "because its file is cut off"},
             {"half", program, true, "because its file is cut off"},
             {"head", program.left(20), true, "because its file is cut off"},
             {"other processor", otherProgram, true, "because it was made for another kind of processor"},
             {"silent", "#!/bin/sh\n", true, "it printed nothing"},
             {"without its libraries", "#!/bin/sh\necho libz.so.1: none >&2\nexit 127\n", true,
              "does not work (libz.so.1: none)"}});
    }
    void toolTrouble() {
        const auto [tool, executable, message] = row<QByteArray, bool, QString>();
        const TestHome home;
        qputenv("RAVELIN_RESOURCES", home.path("own").toUtf8());
        if (!tool.isNull()) {
            const QString path = home.write("own/ffmpeg", tool);
            if (executable) QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner);
        }
        const QUrl url = QUrl::fromLocalFile(home.write("x.mkv"));
        const MKVFileInfo::Probe probe = MKVFileInfo::probe(url);
        QVERIFY(!probe.record);
        QVERIFY2(probe.verdicts.at(0).message.contains(message), qPrintable(probe.verdicts.at(0).message));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, MKVFileInfo::durationOfFile(url));
    }
};

QTEST_GUILESS_MAIN(MKVFileInfoTest)
#include "tst_MKVFileInfo.moc"

#include "convert/AudioHandling.h"

#include <QTest>

class AudioHandlingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void methods_data() {
        QTest::addColumn<QString>("codec");
        QTest::addColumn<bool>("surround");
        QTest::addColumn<QList<int>>("methods");  // compatible, fast, custom
        const auto row = [](const char* codec, bool surround, QList<int> methods) {
            QTest::addRow("%s %s", codec, surround ? "5.1" : "stereo")
                << QString(codec) << surround << methods;
        };
        row("aac", false, {4, 4, 4});
        row("aac", true, {4, 4, 4});
        row("ac3", false, {0, 4, 11});
        row("ac3", true, {0, 4, 12});
        row("dts", false, {0, 2, 13});
        row("dts", true, {0, 3, 14});
        row("flac", false, {0, 2, 15});
        row("flac", true, {0, 2, 16});
        row("vorbis", false, {0, 2, 17});
        row("vorbis", true, {0, 2, 20});
        row("mp3", false, {0, 2, 18});
        row("mp3", true, {0, 2, 20});
        row("eac3", false, {0, 2, 19});
        row("aac-main", true, {0, 2, 20});
        row("AC3", false, {0, 2, 19});
    }
    /// Each custom setting has a number of its own modulo five, so that a mix-up shows.
    void methods() {
        QFETCH(QString, codec);
        QFETCH(bool, surround);
        QFETCH(QList<int>, methods);
        ConversionSettings settings;
        for (int preset = 0; preset < 2; ++preset) {
            settings.set(settings::ConversionPreset, preset);
            QCOMPARE(static_cast<int>(calculateConversionMethod(codec, surround, settings)), methods[preset]);
        }
        settings.set(settings::ConversionPreset, ConversionStyle::Custom);
        if (methods[2] == 4) {
            QCOMPARE(calculateConversionMethod(codec, surround, settings), ConversionMethod::Copy);
            return;
        }
        const settings::Row* const handling[] = {
            &settings::CustomAC3AudioHandling,     &settings::CustomAC351AudioHandling,
            &settings::CustomDTSAudioHandling,     &settings::CustomDTS51AudioHandling,
            &settings::CustomFLACAudioHandling,    &settings::CustomFLAC51AudioHandling,
            &settings::CustomVorbisAudioHandling,  &settings::CustomMP3AudioHandling,
            &settings::CustomUnknownAudioHandling, &settings::CustomUnknown51AudioHandling};
        for (int chosen = 0; chosen < 4; ++chosen) {
            for (const settings::Row* slot : handling)
                settings.set(*slot, (chosen + 1) % 4);
            settings.set(*handling[methods[2] - 11], chosen);
            QCOMPARE(static_cast<int>(calculateConversionMethod(codec, surround, settings)), chosen);
        }
    }

    void downmix() {
        ConversionSettings settings;
        settings.set(settings::ConversionPreset, ConversionStyle::Fast);
        settings.set(settings::AC3Downmix, true);
        settings.set(settings::DTSDownmix, true);
        QCOMPARE(calculateConversionMethod("ac3", true, settings), ConversionMethod::Ac3Stereo);
        QCOMPARE(calculateConversionMethod("ac3", false, settings), ConversionMethod::Copy);
        QCOMPARE(calculateConversionMethod("dts", true, settings), ConversionMethod::Ac3Stereo);
    }

    void trialRun() {
        MKVFileInfo info;
        info.fileURL = QUrl::fromLocalFile("/in/a b.mkv");
        info.destinationURL = QUrl::fromLocalFile("/out/a b.mp4");
        info.videoTrackID = 3;
        QCOMPARE(trialRunArguments(info, 5).join(u'|'),
                 "-i|/in/a b.mkv|-stats|-t|1|-map|0:3|-map|0:5|-vcodec|copy|-acodec|copy|-y|/out/a b.mp4");
        QVERIFY(trialRunAsksForFixup("use the audio bitstream filter 'aac_adtstoasc' to fix it"));
        QVERIFY(!trialRunAsksForFixup("adts"));
    }

    void readingAnEntry() {
        const AudioEntry entry{"#12: ger (dts) [5.1]", 48000};
        QCOMPARE(entry.stream(), 12);
        QCOMPARE(entry.language(), "ger");
        QCOMPARE(entry.codec(), "dts");
        QVERIFY(entry.isSurround());
        QCOMPARE(entry.description(), " ger (dts) [5.1]");
        QCOMPARE((AudioEntry{"#1:", 0}.codec()), QString());
    }
};

QTEST_GUILESS_MAIN(AudioHandlingTest)
#include "tst_AudioHandling.moc"

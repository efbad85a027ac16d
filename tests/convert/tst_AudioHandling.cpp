#include "convert/plan/AudioHandling.h"
#include "fakes/Table.h"

class AudioHandlingTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void methods_data() {
        addRows<QString, bool, QList<int>>({// codec, surround, methods of compatible, fast and custom
                                            {"AAC", "aac", false, {4, 4, 4}},
                                            {"AC3", "ac3", false, {0, 4, 11}},
                                            {"AC3 5.1", "ac3", true, {0, 4, 12}},
                                            {"DTS", "dts", false, {0, 2, 13}},
                                            {"DTS 5.1", "dts", true, {0, 3, 14}},
                                            {"FLAC", "flac", false, {0, 2, 15}},
                                            {"FLAC 5.1", "flac", true, {0, 2, 16}},
                                            {"Vorbis", "vorbis", false, {0, 2, 17}},
                                            {"Vorbis 5.1", "vorbis", true, {0, 2, 20}},
                                            {"MP3", "mp3", false, {0, 2, 18}},
                                            {"MP3 5.1", "mp3", true, {0, 2, 20}},
                                            {"E-AC3", "eac3", false, {0, 2, 19}},
                                            {"AAC Main 5.1", "aac-main", true, {0, 2, 20}},
                                            {"in capitals", "AC3", false, {0, 2, 19}}});
    }
    /// Custom methods from 11 on are indexes of settings.
    void methods() {
        const auto [codec, surround, methods] = row<QString, bool, QList<int>>();
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
        for (const settings::Row* slot : handling)
            settings.set(*slot, 0);
        // Unknown numbers mean copying.
        for (const auto& [chosen, method] : {std::pair(1, 1), {3, 3}, {-1, 4}, {5, 4}, {1000, 4}}) {
            settings.set(*handling[methods[2] - 11], chosen);
            QCOMPARE(static_cast<int>(calculateConversionMethod(codec, surround, settings)), method);
        }
    }

    void downmix() {
        ConversionSettings settings;
        settings.set(settings::ConversionPreset, 7);  // An unknown style is like fast.
        QCOMPARE(calculateConversionMethod("dts", true, settings), ConversionMethod::Ac3Surround);
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
};

QTEST_GUILESS_MAIN(AudioHandlingTest)
#include "tst_AudioHandling.moc"

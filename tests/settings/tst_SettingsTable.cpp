#include "fakes/TestHome.h"
#include "settings/Changes.h"
#include "settings/Keys.h"
#include "settings/SettingsTable.h"
#include "settings/Snapshot.h"
#include "support/store/Defaults.h"
#include "support/store/SettingsFile.h"

#include <QSignalSpy>
#include <QTest>
#include <QThread>

class SettingsTableTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void registeredDefaults() {
        const TestHome home;
        QCOMPARE(std::ranges::count_if(settings::all(), &settings::Row::isRegistered), 39);
        QString numbers;
        for (const char* key :
             {"ConversionPreset", "AACBitrate", "AudioVolume", "FixSubtitleDuration",
              "DisableBuiltinSubtitles", "IncludeSurroundTrackTranscoded", "CustomAC351AudioHandling",
              "CustomAC3AudioHandling", "CustomDTSAudioHandling", "CustomDTS51AudioHandling",
              "CustomUnknown51AudioHandling", "ConcurrentJobs", "InsertJobsAtBottom",
              "ProduceStreamableFiles", "NoSuchKey"})
            numbers += QString::number(defaultInt(key)) + ' ';
        QCOMPARE(numbers, "0 1 100 1 1 1 4 4 2 3 3 0 0 0 0 ");
        QCOMPARE(defaultArray(kDestinationNamesKey).value(), QVariantList());
        QVERIFY(!defaultObject(kEAC3ConvertKey).isValid());
        QVERIFY(standardUserDefaults().synchronise());
        QVERIFY(!QFile::exists(standardUserDefaults().filePath()));  // Defaults are never written.
    }

    void numbersRead() {
        using namespace settings;
        QCOMPARE(ConversionPreset.fitting(2), 2);
        QCOMPARE(ConversionPreset.fitting(3), 1);
        QCOMPARE(ConversionPreset.fitting(-1), 1);
        QCOMPARE(DefaultExtension.fitting(9), 1);
        QCOMPARE(AutoRemoveType.fitting(-1), 1);
        QCOMPARE(AACBitrate.fitting(7), 7);
        QCOMPARE(AACBitrate.fitting(8), 1);
        QCOMPARE(AC3StereoBitrate.fitting(4), 1);
        QCOMPARE(CustomDTSAudioHandling.fitting(3), 3);
        QCOMPARE(CustomDTSAudioHandling.fitting(5), 4);
        QCOMPARE(DefaultAudio.fitting(1), 0);
        QCOMPARE(DefaultAudio.fitting(8), 8);
        QCOMPARE(DefaultAudio.fitting(9), 0);
        QCOMPARE(ExternalSubtitleEncoding.fitting(1), 0);
        QCOMPARE(ExternalSubtitleEncoding.fitting(38), 38);
        QCOMPARE(ExternalSubtitleEncoding.fitting(39), 0);
        QCOMPARE(DefaultDestination.fitting(99), 99);
    }

    void typedValues() {
        const TestHome home;
        QVERIFY(!settings::AutoAdd.value());
        setDefaultInt(kAutoAddKey, 7);
        QVERIFY(settings::AutoAdd.value());
        QCOMPARE(settings::AACBitrate.word(), QLatin1StringView("128k"));
        setDefaultString(kAudioVolumeKey, "99.5");
        QCOMPARE(settings::AudioVolume.value(), 99.5F);
        setDefaultInt(kConversionPresetKey, 3);
        QCOMPARE(settings::ConversionPreset.value(), ConversionStyle::Fast);
        QVERIFY(!settings::ConversionPreset.chosen());
        settings::ConversionPreset.setValue(ConversionStyle::Custom);
        QCOMPARE(defaultInt(kConversionPresetKey), 2);
        setDefaultArray(kDestinationBookmarksKey, QVariantList{QByteArray("/a")});
        QCOMPARE(settings::DestinationBookmarks.value(), QByteArrayList{"/a"});
    }

    void aSnapshotStays() {
        const TestHome home;
        const settings::Snapshot fresh;
        QVERIFY(fresh.value(settings::FixSubtitleDuration) && !fresh.value(settings::ConcurrentJobs));
        setDefaultInt(kAACBitrateKey, 3);
        standardUserDefaults().setOverride(kAutoAddKey, 1);
        settings::Snapshot snapshot = settings::Snapshot::current();
        setDefaultInt(kAACBitrateKey, 0);
        QCOMPARE(snapshot.word(settings::AACBitrate), QLatin1StringView("192k"));
        QVERIFY(snapshot.value(settings::AutoAdd) && snapshot.value(settings::FixSubtitleDuration));
        snapshot.set(settings::AudioVolume, 98.5F);
        QCOMPARE(snapshot.value(settings::AudioVolume), 98.5F);
    }

    void changesAreReported() {
        const TestHome home;
        QStringList reported;
        auto listener = std::make_unique<QObject>();
        settings::AutoAdd.onChange(listener.get(), [&] { reported.append("here"); });
        QSignalSpy all(&settings::Changes::shared(), &settings::Changes::changed);
        settings::AutoAdd.setValue(true);
        settings::AutoAdd.setValue(true);  // No change.
        settings::AutoClean.setValue(true);
        setDefaultInt("quillonlib_usages", 1);  // Not a setting of the table.
        QCOMPARE(reported, QStringList{"here"});
        QCOMPARE(all.count(), 2);
        std::unique_ptr<QThread> thread(QThread::create([] { settings::AutoAdd.setValue(false); }));
        thread->start();
        QVERIFY(thread->wait());
        QCOMPARE(reported.size(), 1);  // Emitted in the listener's thread.
        QTRY_COMPARE(reported.size(), 2);
        listener.reset();
        setDefaultObject(kAutoAddKey, {});
        QCOMPARE(reported.size(), 2);
    }

    void textsOfPeople() {
        using enum settings::Type;
        for (const auto& [type, text, value] :
             std::initializer_list<std::tuple<settings::Type, QString, QVariant>>{
                 {Integer, "150", qint64{150}},
                 {Integer, "-1", qint64{-1}},
                 {StringArray, R"(["a","ü"])", QVariantList{"a", "ü"}},
                 {DataArray, R"(["/a"])", QVariantList{QByteArray("/a")}}}) {
            QCOMPARE(settings::valueFromText(type, text).value(), value);
            QCOMPARE(settings::textFromValue(value), text);
        }
        for (const char* text : {"loud", "", "1.5", "1x", "99999999999999999999"})
            QVERIFY2(!settings::valueFromText(Integer, text) && !settings::valueFromText(Boolean, text),
                     text);
        QVERIFY(!settings::valueFromText(StringArray, "a") && !settings::valueFromText(StringArray, "[1]"));
    }

    void nearestKeys() {
        QCOMPARE(settings::nearestKeys("audiovolume").first(), "AudioVolume");
        QCOMPARE(settings::nearestKeys("AC3Bitrate").size(), 3);
        QVERIFY(settings::nearestKeys("AACBitrte").contains("AACBitrate"));
    }
};

QTEST_GUILESS_MAIN(SettingsTableTest)
#include "tst_SettingsTable.moc"

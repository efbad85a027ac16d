#include "fakes/Table.h"
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

Q_DECLARE_METATYPE(const settings::Row*)

class SettingsTableTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFreshUserReads() {
        const TestHome home;
        for (const auto& [key, value] : {std::pair("ConversionPreset", 0),
                                         {"AACBitrate", 1},
                                         {"AudioVolume", 100},
                                         {"FixSubtitleDuration", 1},
                                         {"DisableBuiltinSubtitles", 1},
                                         {"IncludeSurroundTrackTranscoded", 1},
                                         {"CustomAC351AudioHandling", 4},
                                         {"CustomAC3AudioHandling", 4},
                                         {"CustomDTSAudioHandling", 2},
                                         {"CustomDTS51AudioHandling", 3},
                                         {"CustomUnknown51AudioHandling", 3},
                                         {"ConcurrentJobs", 0},
                                         {"InsertJobsAtBottom", 0},
                                         {"ProduceStreamableFiles", 0},
                                         {"NoSuchKey", 0}})
            QVERIFY2(defaultInt(key) == value, key);
    }

    void registeredDefaults() {
        const TestHome home;
        QCOMPARE(std::ranges::count_if(settings::all(), &settings::Row::registered), 38);
        QCOMPARE(defaultArray(kDestinationNamesKey).value(), QVariantList());
        QVERIFY(!defaultObject(kEAC3ConvertKey).isValid());
        QVERIFY(standardUserDefaults().synchronise());
        QVERIFY(!QFile::exists(standardUserDefaults().filePath()));  // Defaults are never written.
    }

    void numbersRead_data() {
        QTest::addColumn<const settings::Row*>("setting");
        QTest::addColumn<qint64>("stored");
        QTest::addColumn<qint64>("means");
        const auto row = [](const settings::Row& setting, qint64 stored, qint64 means) {
            QTest::addRow("%s %lld", setting.key.data(), stored) << &setting << stored << means;
        };
        row(settings::ConversionPreset, 2, 2);
        row(settings::ConversionPreset, 3, 1);
        row(settings::ConversionPreset, -1, 1);
        row(settings::DefaultExtension, 9, 1);
        row(settings::AutoRemoveType, -1, 1);
        row(settings::AACBitrate, 7, 7);
        row(settings::AACBitrate, 8, 1);
        row(settings::AC3StereoBitrate, 4, 1);
        row(settings::CustomDTSAudioHandling, 3, 3);
        row(settings::CustomDTSAudioHandling, 5, 4);
        row(settings::DefaultAudio, 1, 0);
        row(settings::DefaultAudio, 8, 8);
        row(settings::DefaultAudio, 9, 0);
        row(settings::ExternalSubtitleEncoding, 1, 0);
        row(settings::ExternalSubtitleEncoding, 38, 38);
        row(settings::ExternalSubtitleEncoding, 39, 0);
        row(settings::DefaultDestination, 99, 99);
    }
    void numbersRead() {
        QFETCH(const settings::Row*, setting);
        QFETCH(qint64, stored);
        QTEST(setting->fitting(stored), "means");
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

    void textsOfPeople_data() {
        using enum settings::Type;
        addRows<settings::Type, QString, QVariant>(
            {{"number", Integer, "150", qint64{150}},
             {"negative", Integer, "-1", qint64{-1}},
             {"word", Integer, "loud", {}},
             {"number and word", Boolean, "1x", {}},
             {"nothing", Integer, "", {}},
             {"fraction", Integer, "1.5", {}},
             {"beyond 64 bits", Integer, "99999999999999999999", {}},
             {"names", StringArray, R"(["a","ü"])", QVariantList{"a", "ü"}},
             {"folders", DataArray, R"(["/a"])", QVariantList{QByteArray("/a")}},
             {"not a list", StringArray, "a", {}},
             {"a list of numbers", StringArray, "[1]", {}}});
    }
    void textsOfPeople() {
        const auto [type, text, value] = row<settings::Type, QString, QVariant>();
        const auto read = settings::valueFromText(type, text);
        QCOMPARE(read.value_or(QVariant()), value);
        if (read) QCOMPARE(settings::textFromValue(*read), text);
    }

    void nearestKeys() {
        QCOMPARE(settings::nearestKeys("audiovolume").first(), "AudioVolume");
        QCOMPARE(settings::nearestKeys("AC3Bitrate").size(), 3);
        QVERIFY(settings::nearestKeys("AACBitrte").contains("AACBitrate"));
    }
};

QTEST_GUILESS_MAIN(SettingsTableTest)
#include "tst_SettingsTable.moc"

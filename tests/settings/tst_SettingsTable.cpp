#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "settings/Keys.h"
#include "settings/SettingsTable.h"
#include "support/store/Defaults.h"
#include "support/store/SettingsFile.h"

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
        const auto table = settings::all();
        QCOMPARE(std::ranges::count_if(table, &settings::Setting::registered), 38);
        QCOMPARE(defaultArray(kDestinationNamesKey).value(), QVariantList());
        QVERIFY(!defaultObject(kEAC3ConvertKey).isValid());
        QVERIFY(standardUserDefaults().synchronise());
        QVERIFY(!QFile::exists(standardUserDefaults().filePath()));  // Defaults are never written.
        QSet<QString> keys;
        for (const settings::Setting& setting : table)
            keys.insert(setting.key);
        QCOMPARE(keys.size(), static_cast<qsizetype>(table.size()));
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

#include "fakes/TestHome.h"
#include "settings/Keys.h"
#include "settings/SettingsTable.h"
#include "support/store/Defaults.h"
#include "support/store/SettingsFile.h"

#include <QTest>

class SettingsTableTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFreshUserReads_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<qint64>("value");
        const std::pair<const char*, qint64> expected[] = {{"ConversionPreset", 0},
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
                                                           {"NoSuchKey", 0}};
        for (const auto& [key, value] : expected)
            QTest::newRow(key) << QString(key) << value;
    }
    void aFreshUserReads() {
        const TestHome home;
        QFETCH(QString, key);
        QTEST(defaultInt(key), "value");
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
        QTest::addColumn<settings::Type>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QVariant>("value");
        QTest::newRow("number") << Integer << "150" << QVariant(qint64{150});
        QTest::newRow("negative") << Integer << "-1" << QVariant(qint64{-1});
        QTest::newRow("word") << Integer << "loud" << QVariant();
        QTest::newRow("number and word") << Boolean << "1x" << QVariant();
        QTest::newRow("nothing") << Integer << "" << QVariant();
        QTest::newRow("fraction") << Integer << "1.5" << QVariant();
        QTest::newRow("beyond 64 bits") << Integer << "99999999999999999999" << QVariant();
        QTest::newRow("names") << StringArray << R"(["a","ü"])" << QVariant(QVariantList{"a", "ü"});
        QTest::newRow("folders") << DataArray << R"(["/a"])" << QVariant(QVariantList{QByteArray("/a")});
        QTest::newRow("not a list") << StringArray << "a" << QVariant();
        QTest::newRow("a list of numbers") << StringArray << "[1]" << QVariant();
    }
    void textsOfPeople() {
        QFETCH(settings::Type, type);
        QFETCH(QString, text);
        QFETCH(QVariant, value);
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

#include "fakes/TestHome.h"
#include "settings/Changes.h"
#include "settings/Keys.h"
#include "settings/SettingsTable.h"
#include "settings/Snapshot.h"
#include "support/store/SettingsFile.h"

#include <QSignalSpy>
#include <QThread>

class SettingsTableTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void registeredDefaults() {
        const TestHome home;
        QCOMPARE(defaultInt(kAudioVolumeKey), 100);
        QCOMPARE(defaultArray(kDestinationNamesKey).value(), QVariantList());
        QVERIFY(!defaultObject(kEAC3ConvertKey).isValid());
        QVERIFY(standardUserDefaults().synchronise());
        QVERIFY(!QFile::exists(standardUserDefaults().filePath()));  // Defaults are never written.
    }

    void numbersRead() {
        using namespace settings;
        const auto fitting = [](const auto& setting, std::initializer_list<qint64> numbers) {
            QList<qint64> result;
            for (const qint64 number : numbers)
                result.append(setting.fitting(number));
            return result;
        };
        QCOMPARE(fitting(ConversionPreset, {2, 3, -1}), (QList<qint64>{2, 1, 1}));
        QCOMPARE(fitting(AACBitrate, {7, 8}), (QList<qint64>{7, 1}));
        QCOMPARE(fitting(CustomDTSAudioHandling, {3, 5}), (QList<qint64>{3, 4}));
        QCOMPARE(fitting(DefaultAudio, {1, 8, 9}), (QList<qint64>{0, 8, 0}));
        QCOMPARE(fitting(ExternalSubtitleEncoding, {1, 38, 39}), (QList<qint64>{0, 38, 0}));
        for (const qint64 number :
             {DefaultExtension.fitting(9), AutoRemoveType.fitting(-1), AC3StereoBitrate.fitting(4)})
            QCOMPARE(number, 1);
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
        const QVariant folders = QVariantList{QByteArray("/a")};
        QCOMPARE(settings::valueFromText(DataArray, R"(["/a"])").value(), folders);
        QCOMPARE(settings::textFromValue(folders), R"(["/a"])");
        for (const char* bad : {"1.5", "1x", "99999999999999999999"})
            QVERIFY2(!settings::valueFromText(Integer, bad) && !settings::valueFromText(Boolean, bad), bad);
        QVERIFY(!settings::valueFromText(StringArray, "[1]"));
        QCOMPARE(settings::nearestKeys("AC3Bitrate").size(), 3);
    }
};

QTEST_GUILESS_MAIN(SettingsTableTest)
#include "tst_SettingsTable.moc"

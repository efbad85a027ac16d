#include "fakes/TestHome.h"
#include "support/Defaults.h"
#include "support/Files.h"
#include "support/SettingsFile.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QUrl>

#include <csignal>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

class SettingsStoreTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void valuesComeBackAsWhatTheyWere_data() {
        QTest::addColumn<QVariant>("value");
        QTest::newRow("integer") << QVariant(qint64{9007199254740993});
        QTest::newRow("negative") << QVariant(qint64{-1});
        QTest::newRow("whole real") << QVariant(100.0);
        QTest::newRow("real") << QVariant(0.1);
        QTest::newRow("text") << QVariant("12");
        QTest::newRow("text with everything") << QVariant("\"\\\n\t€ü\u2028");
        QTest::newRow("data") << QVariant(QByteArray("\0\xff/folder", 9));
        QTest::newRow("address") << QVariant(QUrl("file:///a%20b"));
        QTest::newRow("one-element list") << QVariant(QVariantList{"only"});
        QTest::newRow("empty list") << QVariant(QVariantList());
        QTest::newRow("dictionary") << QVariant(QVariantMap{{"a", qint64{1}}, {"b", QVariantList{2.5}}});
        QTest::newRow("dictionary that looks marked") << QVariant(QVariantMap{{"$data", "not data"}});
    }
    void valuesComeBackAsWhatTheyWere() {
        QFETCH(QVariant, value);
        const QVariantMap map = settingsfile::decoded(settingsfile::encoded({{"key", value}})).value();
        QCOMPARE(map["key"].metaType(), value.metaType());
        QCOMPARE(map["key"], value);
    }

    void coercion_data() {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<qint64>("integer");
        QTest::addColumn<float>("real");
        QTest::addColumn<QString>("text");  // null: none
        QTest::newRow("missing") << QVariant() << qint64{0} << 0.0F << QString();
        QTest::newRow("number") << QVariant(qint64{7}) << qint64{7} << 7.0F << "7";
        QTest::newRow("real") << QVariant(2.9) << qint64{2} << 2.9F << "2.9";
        QTest::newRow("text that begins with a number")
            << QVariant("12.5 apples") << qint64{12} << 12.5F << "12.5 apples";
        QTest::newRow("text") << QVariant("apples") << qint64{0} << 0.0F << "apples";
        QTest::newRow("truth") << QVariant(true) << qint64{1} << 1.0F << "1";
        QTest::newRow("list") << QVariant(QVariantList{1}) << qint64{0} << 0.0F << QString();
        QTest::newRow("data") << QVariant(QByteArray("5")) << qint64{0} << 0.0F << QString();
        QTest::newRow("beyond an integer")
            << QVariant(1e300) << qint64{0} << std::numeric_limits<float>::infinity() << "1e+300";
    }
    void coercion() {
        const TestHome home;
        QFETCH(QVariant, value);
        setDefaultObject("key", value);
        QTEST(defaultInt("key"), "integer");
        QTEST(defaultFloat("key"), "real");
        QFETCH(QString, text);
        QCOMPARE(defaultString("key").has_value(), !text.isNull());
        QCOMPARE(defaultString("key").value_or(QString()), text);
    }

    void addressesAndContainers() {
        const TestHome home;
        setDefaultString("path", "~/Movies");
        QCOMPARE(defaultURL("path").value(), QUrl::fromLocalFile(QDir::homePath() + "/Movies"));
        setDefaultInt("number", 3);
        QVERIFY(!defaultURL("number") && !defaultArray("number"));
        setDefaultURL("path", std::nullopt);
        QVERIFY(!defaultObject("path").isValid());
    }

    void boundedHistory() {
        const TestHome home;
        setDefaultString("history", "not an array");
        qn_defaults_addtoarray("history", "1", 10);
        QCOMPARE(defaultArray("history").value(), QVariantList{"1"});
        for (int i = 2; i <= 12; ++i)
            qn_defaults_addtoarray("history", QString::number(i), 10);
        QCOMPARE(defaultArray("history")->size(), 10);
        QCOMPARE(defaultArray("history")->first(), QVariant("3"));
        qn_defaults_addtoarray("history", "13", 0);
        QCOMPARE(defaultArray("history").value(), QVariantList());
    }

    void searchOrder() {
        const TestHome home;
        SettingsStore store(home.path("store.json"));
        store.registerDefaults({{"key", 1}});
        QCOMPARE(store.object("key"), QVariant(1));
        store.setObject("key", 2);
        store.setOverride("key", 3);
        QCOMPARE(store.object("key"), QVariant(3));
        QVERIFY(store.synchronise());
        const QVariantMap onDisk = settingsfile::decoded(files::contents(store.filePath()).value()).value();
        QCOMPARE(onDisk, (QVariantMap{{"key", qint64{2}}}));
    }

    void twoInstancesLoseNothing() {
        const TestHome home;
        const QString path = home.path("store.json");
        SettingsStore first(path);
        first.setObject("shared", "old");
        first.setObject("removed", 1);
        QVERIFY(first.synchronise());
        SettingsStore second(path);
        first.setObject("first", 1);
        second.setObject("second", 2);
        second.setObject("removed", {});
        second.setObject("shared", "new");
        QVERIFY(second.synchronise());
        QStringList reported;
        first.setValueHandler([&](const QString& key) { reported.append(key); });
        QVERIFY(first.synchronise());
        reported.sort();
        QCOMPARE(reported, (QStringList{"removed", "second", "shared"}));
        const SettingsStore result(path);
        QCOMPARE(result.object("first").toInt(), 1);
        QCOMPARE(result.object("second").toInt(), 2);
        QCOMPARE(result.object("shared").toString(), "new");
        QVERIFY(!result.object("removed").isValid());
        QCOMPARE(first.object("shared").toString(), "new");  // What the other one wrote is taken over.
    }

    void damagedFileIsKeptAside_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("cut off") << QByteArray("{\"a\": 1, \"b");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("a list") << QByteArray("[1]");
        QTest::newRow("noise") << QByteArray("\0\x01\xff", 3);
    }
    void damagedFileIsKeptAside() {
        const TestHome home;
        QFETCH(QByteArray, bytes);
        const QString path = home.write("store.json", bytes);
        SettingsStore store(path);
        QVERIFY(store.problem().contains("store-damaged.json"));
        store.setObject("key", 1);
        QVERIFY(store.synchronise());
        QCOMPARE(files::contents(home.path("store-damaged.json")).value(), bytes);
        QCOMPARE(SettingsStore(path).object("key").toInt(), 1);
    }

    void unwritablePlace() {
        const TestHome home;
        home.write("file");
        SettingsStore store(home.path("file/store.json"));
        store.setObject("key", 1);
        QVERIFY(!store.synchronise());
        QVERIFY(!store.problem().isEmpty());
        QCOMPARE(store.object("key").toInt(), 1);
        QVERIFY(store.hasChanges());
    }

    /// Whatever moment the process is killed at, the file is an old or a new one, whole.
    void killedWhileWriting() {
        const TestHome home;
        const QString path = home.path("store.json");
        for (int round = 0; round < 20; ++round) {
            const pid_t child = ::fork();
            if (child == 0) {
                SettingsStore store(path);
                for (int i = 0;; ++i) {
                    store.setObject("long", QString(20000, QChar('a' + i % 26)));
                    store.synchronise();
                }
            }
            QTRY_VERIFY(QFile::exists(path));
            ::usleep(static_cast<useconds_t>(1000 * (round + 1)));
            ::kill(child, SIGKILL);
            ::waitpid(child, nullptr, 0);
            const auto map = settingsfile::decoded(files::contents(path).value());
            QVERIFY(map);
            QCOMPARE((*map)["long"].toString().size(), 20000);
        }
        SettingsStore after(path);  // The lock that the killed one held is no obstacle.
        after.setObject("key", 1);
        QVERIFY(after.synchronise());
    }

    void manyThreads() {
        const TestHome home;
        SettingsStore store(home.path("store.json"));
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&store, t] {
                for (int i = 0; i < 50; ++i)
                    store.setObject(QString("%1-%2").arg(t).arg(i), i);
                store.synchronise();
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        QCOMPARE(settingsfile::decoded(files::contents(store.filePath()).value())->size(), 200);
    }

    void changesAreToldOnceUntilTheyAreSaved() {
        const TestHome home;
        SettingsStore store(home.path("store.json"));
        int told = 0;
        store.setChangeHandler([&] { ++told; });
        store.setObject("a", 1);
        store.setObject("b", 1);
        QCOMPARE(told, 1);
        store.synchronise();
        store.setObject("a", 1);  // The same value: nothing to save.
        QCOMPARE(told, 1);
        store.setObject("a", 2);
        QCOMPARE(told, 2);
    }
};

QTEST_GUILESS_MAIN(SettingsStoreTest)
#include "tst_SettingsStore.moc"

#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "support/base/Files.h"
#include "support/store/SettingsFile.h"

#include <array>
#include <csignal>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

class SettingsStoreTest : public QObject {
    Q_OBJECT

    static QVariantMap onDisk(const SettingsStore& store) {
        return settingsfile::decoded(files::contents(store.filePath()).value()).value();
    }

private Q_SLOTS:
    void valuesComeBackAsWhatTheyWere() {
        for (const QVariant& value : std::initializer_list<QVariant>{
                 qint64{9007199254740993}, qint64{-1}, 100.0, 0.1, "12", "\"\\\n\t€ü\u2028",
                 QByteArray("\0\xff/folder", 9), QUrl("file:///a%20b"),
                 QDateTime::fromMSecsSinceEpoch(1).toUTC(), QVariantList{"only"}, QVariantList(),
                 QVariantMap{{"a", qint64{1}}, {"b", QVariantList{2.5}}},
                 QVariantMap{{"$data", "looks marked"}}}) {
            const QVariantMap map = settingsfile::decoded(settingsfile::encoded({{"key", value}})).value();
            QCOMPARE(map["key"].metaType(), value.metaType());
            QCOMPARE(map["key"], value);
        }
    }

    void coercion_data() {
        constexpr float infinity = std::numeric_limits<float>::infinity();
        const QString none;
        addRows<QVariant, qint64, float, QString>({{"missing", QVariant(), 0, 0.0F, none},
                                                   {"number", qint64{7}, 7, 7.0F, "7"},
                                                   {"real", 2.9, 2, 2.9F, "2.9"},
                                                   {"text", "12.5 apples", 12, 12.5F, "12.5 apples"},
                                                   {"truth", true, 1, 1.0F, "1"},
                                                   {"list", QVariantList{1}, 0, 0.0F, none},
                                                   {"data", QByteArray("5"), 0, 0.0F, none},
                                                   {"too great", 1e300, 0, infinity, "1e+300"}});
    }
    void coercion() {
        const auto [value, integer, real, text] = row<QVariant, qint64, float, QString>();
        const TestHome home;
        setDefaultObject("key", value);
        QCOMPARE(defaultInt("key"), integer);
        QCOMPARE(defaultFloat("key"), real);
        QCOMPARE(defaultString("key").has_value(), !text.isNull());
        QCOMPARE(defaultString("key").value_or(QString()), text);
    }

    void otherTypes() {
        const TestHome home;
        setDefaultURL("url", QUrl("file:///a%20b"));
        setDefaultFloat("real", 1.5F);
        setDefaultDict("map", QVariantMap{{"a", 1}});
        QCOMPARE(defaultURL("url").value(), QUrl("file:///a%20b"));
        QCOMPARE(defaultFloat("real"), 1.5F);
        QCOMPARE(defaultDict("map").value(), (QVariantMap{{"a", 1}}));
        QVERIFY(!defaultURL("real") && !defaultDict("url") && !defaultArray("map"));
    }

    void boundedHistory() {
        const TestHome home;
        setDefaultString("history", "not an array");
        for (int i = 1; i <= 12; ++i)
            qn_defaults_addtoarray("history", QString::number(i), 3);
        QCOMPARE(defaultArray("history").value(), (QVariantList{"10", "11", "12"}));
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
        QCOMPARE(onDisk(store), (QVariantMap{{"key", qint64{2}}}));
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
        QCOMPARE(onDisk(first), (QVariantMap{{"first", 1LL}, {"second", 2LL}, {"shared", "new"}}));
        QCOMPARE(first.object("shared").toString(), "new");  // What the other one wrote is taken over.
    }

    void damagedFileIsRenamed() {
        for (const QByteArray& bytes :
             {QByteArray("{\"a\": 1, \"b"), QByteArray(""), QByteArray("[1]"), QByteArray("\0\x01\xff", 3)}) {
            const TestHome home;
            const QString path = home.write("store.json", bytes);
            SettingsStore store(path);
            QVERIFY2(store.problem().contains("store-damaged.json"), bytes);
            store.setObject("key", 1);
            QVERIFY(store.synchronise());
            QCOMPARE(files::contents(home.path("store-damaged.json")).value(), bytes);
            QCOMPARE(SettingsStore(path).object("key").toInt(), 1);
        }
    }

    void unwritableFolder() {
        const TestHome home;
        home.write("file");
        SettingsStore store(home.path("file/store.json"));
        store.setObject("key", 1);
        QVERIFY(!store.synchronise());
        QVERIFY(!store.problem().isEmpty());
        QCOMPARE(store.object("key").toInt(), 1);
        QVERIFY(store.hasChanges());
    }

    /// Whenever the process is killed, the file is a complete old or new one. The child reports each finished
    /// write, and continues until it is killed.
    void killedWhileWriting() {
        const TestHome home;
        const QString path = home.path("store.json");
        std::array<int, 2> pipe{};
        QCOMPARE(::pipe(pipe.data()), 0);
        for (int round = 1; round <= 20; ++round) {
            const pid_t child = ::fork();
            if (child == 0) {
                SettingsStore store(path);
                for (int i = 0;; ++i) {
                    store.setObject("long", QString(20000, QChar('a' + i % 26)));
                    store.synchronise();
                    if (::write(pipe[1], "", 1) != 1) ::_exit(1);
                }
            }
            char said = 0;
            for (int i = 0; i < round; ++i)
                QCOMPARE(::read(pipe[0], &said, 1), 1);
            ::kill(child, SIGKILL);
            ::waitpid(child, nullptr, 0);
            const auto map = settingsfile::decoded(files::contents(path).value());
            QVERIFY(map);
            QCOMPARE((*map)["long"].toString().size(), 20000);
        }
        SettingsStore after(path);  // The killed process's lock was released.
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
        QCOMPARE(onDisk(store).size(), 200);
    }

    void changesAreReportedOnceUntilSaved() {
        const TestHome home;
        SettingsStore store(home.path("store.json"));
        int told = 0;
        store.setChangeHandler([&](SettingsStore::Urgency) { ++told; });
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

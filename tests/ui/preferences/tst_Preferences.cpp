#include "app/destinations/Destinations.h"
#include "app/watching/WatchFolder.h"
#include "fakes/RecordingPanels.h"
#include "fakes/Table.h"
#include "fakes/TestHome.h"
#include "settings/Changes.h"
#include "settings/Keys.h"
#include "settings/Settings.h"
#include "settings/SettingsTable.h"
#include "ui/preferences/PreferencesWindow.h"
#include "ui/widgets/DestinationComboBox.h"
#include "ui/widgets/ElidedLabel.h"

#include <QSignalSpy>
#include <QtWidgets>

namespace {

struct Fixture {
    void show() {
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
    }
    template <class Control>
    Control* get(const QString& name) {
        return window.findChild<Control*>(name);
    }
    QStackedWidget* pages() { return get<QStackedWidget>("pages"); }
    /// Shows the page with the control, as a click in the list does, and scrolls to the control.
    QWidget* reach(const QString& name) {
        auto* control = get<QWidget>(name);
        for (int i = 0; i < pages()->count(); ++i) {
            if (!pages()->widget(i)->isAncestorOf(control)) continue;
            auto* list = get<QListWidget>("pageList");
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                              list->visualItemRect(list->item(i)).center());
            pages()->widget(i)->findChild<QScrollArea*>()->ensureWidgetVisible(control);
        }
        return control;
    }
    void click(const QString& name) { QTest::mouseClick(reach(name), Qt::LeftButton, {}, QPoint(8, 8)); }
    /// Makes these folders the stored ones.
    void store(const QStringList& names) {
        QVariantList bookmarks;
        for (const QString& name : names) {
            QDir(home.path()).mkpath(name);
            bookmarks.append(home.path(name).toUtf8());
        }
        setDefaultArray(kDestinationBookmarksKey, bookmarks);
        setDefaultArray(kDestinationNamesKey, QVariant(names).toList());
        destinations.rebuildPreferencesDestinationPopUp();
    }
    void press(const QString& name, Qt::Key key) {
        reach(name)->setFocus();
        QTest::keyClick(get<QWidget>(name), key);
    }

    TestHome home;
    RecordingPanels panels;
    Destinations destinations{panels};
    WatchFolder watchFolder{panels};
    PreferencesWindow window{destinations, watchFolder};
};

QList<QWidget*> boundControls(const QWidget& root) {
    QList<QWidget*> controls = root.findChildren<QWidget*>();
    controls.removeIf([](const QWidget* control) { return SettingsBinder::keysOf(*control).isEmpty(); });
    return controls;
}

}  // namespace

class PreferencesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everySettingHasOneControl() {
        const Fixture fixture;
        QStringList expected;
        const QRegularExpression own(
            "^(Absent.*|WelcomeShown|Conversions|HasUpgradedFromPre13|Usages|convertedFileCount|KeepFolderTree|ProveResults|Stall.*)$");
        for (const settings::Row* setting : settings::all())
            if (!own.match(setting->key).hasMatch()) expected.append(setting->key);
        QStringList bound;
        for (const QWidget* control : boundControls(fixture.window)) {
            bound += SettingsBinder::keysOf(*control);
            auto* spoken = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(control));
            const bool isExplained = !(control->toolTip() + control->accessibleDescription()).isEmpty();
            QVERIFY2(!spoken->text(QAccessible::Name).isEmpty() && isExplained, qPrintable(bound.last()));
        }
        expected.sort();
        bound.sort();
        QCOMPARE(bound, expected);
    }

    void popUpsOfferWhatIsAllowed() {
        const Fixture fixture;
        const QRegularExpression digits("[0-9]+");
        for (const QWidget* control : boundControls(fixture.window)) {
            const auto* box = qobject_cast<const QComboBox*>(control);
            const settings::Row& row = *settings::find(SettingsBinder::keysOf(*control).first());
            if (!box || row.choices.isEmpty()) continue;
            QVERIFY2(box->count() > 1, row.key.data());
            for (int i = 0; i < box->count(); ++i) {
                if ((box->model()->flags(box->model()->index(i, 0)) & Qt::ItemIsEnabled) == 0) continue;
                const settings::Choice* choice = row.choices.find(box->itemData(i).toLongLong());
                QVERIFY2(choice && box->itemData(i).isValid(), qPrintable(box->itemText(i)));
                if (!row.key.endsWith(QLatin1StringView("Bitrate"))) continue;
                QCOMPARE(digits.match(box->itemText(i)).captured(), digits.match(choice->word).captured());
                QCOMPARE(box->itemText(i).endsWith("kbit/s"), choice->word.endsWith('k'));
            }
        }
    }

    void controlsFollowTheSettings() {
        Fixture fixture;
        fixture.show();
        settings::AutoAdd.setValue(true);
        QVERIFY(fixture.get<QAbstractButton>("autoAddCheck")->isChecked());
        settings::ConversionPreset.setValue(ConversionStyle::Fast);
        QVERIFY(fixture.get<QAbstractButton>("styleFast")->isChecked());
        QVERIFY(!fixture.get<QWidget>("aacStereoPopUp")->isEnabled());
        setDefaultObject(kConversionPresetKey, {});
        QVERIFY(fixture.get<QWidget>("aacStereoPopUp")->isEnabled());
    }

    void lettersUnderlinedOnAPageDiffer() {
        Fixture fixture;
        for (int i = 0; i < 3 * fixture.pages()->count(); ++i) {
            const QWidget* page = fixture.pages()->widget(i / 3);
            setDefaultInt(kConversionPresetKey, i % 3);
            QSet<int> letters;
            for (const auto* widget : page->findChildren<QWidget*>()) {
                const auto* label = qobject_cast<const QLabel*>(widget);
                if (!widget->isVisibleTo(page) || (label && !label->buddy())) continue;
                const QString text = widget->property("text").toString();
                const QKeySequence letter = QKeySequence::mnemonic(text);
                QVERIFY2(letter.isEmpty() || !letters.contains(letter[0].key()), qPrintable(text));
                if (!letter.isEmpty()) letters.insert(letter[0].key());
            }
        }
    }

    void choosingStoresAtOnce_data() {
        constexpr int kClick = 0;
        addRows<QString, int, QString, int, int>(
            {{"check box", "autoAddCheck", kClick, "AutoAdd", 0, 1},
             {"any number is yes", "autoAddCheck", kClick, "AutoAdd", 7, 0},
             {"inverted", "internalCheck", kClick, "DisableBuiltinSubtitles", 1, 0},
             {"pop-up", "placePopUp", Qt::Key_Down, "InsertJobsAtBottom", 0, 1},
             {"otherwise", "extensionPopUp", Qt::Key_Up, "DefaultExtension", 9, 0},
             {"over the separator", "languagePopUp", Qt::Key_Down, "DefaultAudio", 0, 2},
             {"a retired encoding", "encodingPopUp", Qt::Key_Down, "ExternalSubtitleEncoding", 0, 2},
             {"what is not offered", "aacStereoPopUp", Qt::Key_Home, "AACBitrate", 99, 0},
             {"no 5.1 of stereo", "dtsStereoPopUp", Qt::Key_Down, "CustomDTSAudioHandling", 2, 4},
             {"volume beyond", "volumeBox", Qt::Key_Down, "AudioVolume", 900, 890},
             {"style", "styleCustom", kClick, "ConversionPreset", 0, 2},
             {"unknown style", "styleFast", kClick, "ConversionPreset", 6, 1}});
    }
    void choosingStoresAtOnce() {
        const auto [control, key, setting, before, after] = row<QString, int, QString, int, int>();
        Fixture fixture;
        setDefaultInt(kConcurrentJobsKey, 1);  // Enables the dependent controls, as the style does.
        setDefaultInt(kConversionPresetKey, control == u"dtsStereoPopUp" ? 2 : 0);
        setDefaultInt(setting, before);
        QSignalSpy changed(&settings::Changes::shared(), &settings::Changes::changed);
        fixture.show();
        QCOMPARE(defaultInt(setting), before);
        key == 0 ? fixture.click(control) : fixture.press(control, static_cast<Qt::Key>(key));
        QCOMPARE(defaultInt(setting), after);
        QCOMPARE(changed.value(0).value(0).toString(), setting);
        QCOMPARE(changed.count(), 1);
    }

    void aValueWithoutItemStays_data() {
        // Nothing is shown: there is no item.
        addRows<QString, QString, int, QString>(
            {{"separator", "languagePopUp", "DefaultAudio", 1, {}},
             {"retired", "encodingPopUp", "ExternalSubtitleEncoding", 1, {}},
             {"behind a gap", "encodingPopUp", "ExternalSubtitleEncoding", 38, "ISO-8859-16"},
             {"no method", "dtsStereoPopUp", "CustomDTSAudioHandling", 12, {}},
             {"5.1 of stereo", "dtsStereoPopUp", "CustomDTSAudioHandling", 3, "AC3 in 5.1"},
             {"otherwise", "autoRemoveTypePopUp", "AutoRemoveType", 5, "Delete for good"}});
    }
    void aValueWithoutItemStays() {
        const auto [control, setting, value, shown] = row<QString, QString, int, QString>();
        Fixture fixture;
        setDefaultInt(setting, value);
        fixture.show();
        const auto* box = fixture.get<QComboBox>(control);
        QVERIFY(shown.isEmpty() ? box->currentIndex() == -1 : box->currentText().startsWith(shown));
        fixture.window.close();
        QCOMPARE(defaultInt(setting), value);
    }

    void restoringLeavesOtherPagesAlone() {
        Fixture fixture;
        for (const settings::Row* setting : settings::all())
            if (setting->type < settings::Type::Data) setDefaultInt(setting->key, 3);
        fixture.show();
        fixture.reach("autoAddCheck");
        const QWidget* page = fixture.pages()->currentWidget();
        QTest::mouseClick(page->findChild<QWidget*>("restoreDefaults"), Qt::LeftButton);
        for (const QWidget* control : boundControls(fixture.window)) {
            const settings::Row& row = *settings::find(SettingsBinder::keysOf(*control).first());
            if (row.type >= settings::Type::Data) continue;
            QCOMPARE(defaultInt(row.key), page->isAncestorOf(control) ? row.integerDefault : 3);
        }
        QCOMPARE(fixture.get<QComboBox>("placePopUp")->currentIndex(), 0);
    }

    void oneStyleHasThePane() {
        Fixture fixture;
        fixture.show();
        fixture.reach("styleControl");
        for (const auto& [style, shown] :
             {std::pair(0, "Compatible"), {1, "Fast"}, {2, "Custom"}, {3, "Fast"}, {-1, "Fast"}}) {
            setDefaultInt(kConversionPresetKey, style);
            for (const QString pane : {"Compatible", "Fast", "Custom"})
                QCOMPARE(fixture.get<QWidget>("container" + pane)->isVisible(), pane == shown);
        }
    }

    void destinationsFollowAndCommandsNeverStay() {
        Fixture fixture;
        fixture.show();
        auto* box = static_cast<DestinationComboBox*>(fixture.reach("preferencesDestinationPopUp"));
        fixture.press("preferencesDestinationPopUp", Qt::Key_End);  // Does not select a command.
        QCOMPARE(defaultInt(kDefaultDestinationKey), 1);
        const auto pick = [&](int index) {
            box->showPopup();
            const auto* view = box->view();
            QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                              view->visualRect(box->model()->index(index, 0)).center());
        };
        pick(3);  // The panel is cancelled.
        QCOMPARE(box->currentIndex(), 1);
        fixture.panels.folder = fixture.home.path();
        pick(3);
        QCOMPARE(defaultInt(kDefaultDestinationKey), 3);
        QCOMPARE(box->currentIndex(), 3);
        const auto* list = fixture.get<QTreeWidget>("folderList");
        QCOMPARE(list->topLevelItem(0)->text(1), fixture.home.path());
        pick(0);
        QCOMPARE(defaultInt(kDefaultDestinationKey), 0);
        pick(6);  // Clears the list, after a question.
        QCOMPARE(list->topLevelItemCount(), 1);
        fixture.home.presenter.answer.response = kAlertSecondButton;
        pick(6);
        QCOMPARE(list->topLevelItemCount(), 0);
        QCOMPARE(box->currentIndex(), 0);
        fixture.destinations.preferencesDestinationPopUp().select(2);  // The separator.
        QCOMPARE(box->currentIndex(), -1);
    }

    void foldersAreEditedInTheList() {
        Fixture fixture;
        fixture.store({"a", "b", "c"});
        setDefaultInt(kDefaultDestinationKey, 3);
        fixture.show();
        auto* list = static_cast<QTreeWidget*>(fixture.reach("folderList"));
        const auto names = [] { return defaultObject(kDestinationNamesKey).toStringList().join(' '); };
        const auto centre = [&](int row, int column = 0) {
            const QModelIndex index = list->model()->index(row, column);
            return list->visualRect(index).center();
        };
        const auto select = [&](int row) {
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, centre(row, 1));
        };
        const auto type = [&](const QString& text, Qt::Key end) {
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);  // The last editor.
            auto* editor = list->findChild<QLineEdit*>();
            QVERIFY(editor);
            QTest::keyClicks(editor, text);
            QTest::keyClick(editor, end);
        };
        QVERIFY(!fixture.get<QWidget>("removeFolder")->isEnabled());
        select(1);
        QTest::keyClick(list, Qt::Key_F2);
        type("My Films", Qt::Key_Return);
        QTRY_COMPARE(names(), "a My Films c");
        QCOMPARE(list->currentIndex().row(), 1);
        QTest::keyClick(list, Qt::Key_F2);
        type("x", Qt::Key_Escape);  // The window stays.
        QVERIFY(fixture.window.isVisible());
        fixture.click("renameFolder");
        type("B", Qt::Key_Return);
        QTRY_COMPARE(names(), "a B c");

        for (const auto& [key, order, preselected] : {std::tuple(Qt::Key_Up, "B a c", 4),
                                                      {Qt::Key_Up, "B a c", 4},
                                                      {Qt::Key_Down, "a B c", 3},
                                                      {Qt::Key_Down, "a c B", 3}}) {
            QTest::keyClick(list, key, Qt::AltModifier);
            QCOMPARE(names(), order);
            QCOMPARE(defaultInt(kDefaultDestinationKey), preselected);
        }
        QVERIFY(!fixture.get<QWidget>("moveFolderDown")->isEnabled());
        fixture.click("moveFolderUp");
        fixture.click("moveFolderUp");
        QCOMPARE(names(), "B a c");
        fixture.click("moveFolderDown");
        QCOMPARE(names(), "a B c");

        // The first one behind the last.
        QTest::mousePress(list->viewport(), Qt::LeftButton, {}, centre(0));
        const QPoint away = centre(0) + QPoint(0, 2 * QApplication::startDragDistance());
        QMouseEvent move(QEvent::MouseMove, away, list->viewport()->mapToGlobal(away), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        for (int i = 0; i < 2; ++i)  // The first one begins it.
            QApplication::sendEvent(list->viewport(), &move);
        const auto* drag = list->findChild<QDrag*>();
        QVERIFY(drag);
        const auto dropAt = [&](QPoint place, const QMimeData& data) {
            QDragEnterEvent enter(place, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
            enter.ignore();
            QApplication::sendEvent(list->viewport(), &enter);
            if (!enter.isAccepted()) return false;
            QDropEvent drop(place, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(list->viewport(), &drop);
            return true;
        };
        QMimeData foreign;
        foreign.setData("application/x-qabstractitemmodeldatalist", "x");
        QVERIFY(!dropAt(centre(2), foreign));
        QVERIFY(dropAt(centre(2) + QPoint(0, 5), *drag->mimeData()));
        QCOMPARE(names(), "B c a");
        QCOMPARE(defaultInt(kDefaultDestinationKey), 5);
        QTest::mouseRelease(list->viewport(), Qt::LeftButton, {}, centre(2));

        select(2);
        QTest::keyClick(list, Qt::Key_Delete);
        QCOMPARE(names(), "B c");
        QCOMPARE(defaultInt(kDefaultDestinationKey), 0);
        QCOMPARE(list->currentIndex().row(), 1);
        fixture.click("removeFolder");
        QCOMPARE(names(), "B");
        fixture.click("clearFolders");
        QCOMPARE(names(), "B");

        // Restoring the page is no way around the question.
        setDefaultInt(kDefaultDestinationKey, 3);
        QTest::mouseClick(fixture.pages()->currentWidget()->findChild<QWidget*>("restoreDefaults"),
                          Qt::LeftButton);
        QCOMPARE(names(), "B");
        QCOMPARE(defaultInt(kDefaultDestinationKey), 0);
    }

    void theWatchFolderNeedsAFolder() {
        Fixture fixture;
        fixture.show();
        auto* active = static_cast<QCheckBox*>(fixture.reach("watchfolderActive"));
        QVERIFY(!active->isEnabled());
        QTest::mouseClick(active, Qt::LeftButton, {}, QPoint(8, 8));
        QCOMPARE(defaultInt("WatchfolderActive"), 0);
        QCOMPARE(fixture.get<QLabel>("watchfolderLabel")->text(), "No folder is chosen.");

        const QString deep = "in" + QString("/a folder with a long name").repeated(8);
        QDir(fixture.home.path()).mkpath(deep);
        fixture.panels.folder = fixture.home.path(deep);
        fixture.click("watchfolderAutoAdd");
        fixture.click("watchfolderSet");
        QCOMPARE(defaultInt("WatchfolderAutoAdd"), 1);
        QCOMPARE(fixture.get<QLabel>("watchfolderLabel")->text(), "a folder with a long name");
        const auto* path = fixture.get<ElidedLabel>("watchfolderPath");
        QCOMPARE(path->text(), fixture.panels.folder);
        QTRY_VERIFY(path->isVisible() && path->toolTip().contains("a folder with a long name/a folder"));
        fixture.click("watchfolderActive");
        QVERIFY(fixture.watchFolder.isWatching());

        QVERIFY(QDir(fixture.home.path("in")).removeRecursively());
        QTRY_VERIFY_WITH_TIMEOUT(!fixture.watchFolder.isWatching(), 30000);
        QVERIFY(active->isEnabled());  // It is watched again when it is there, or not.
    }

    void theWheelTurnsOnlyWhatTheUserWentInto() {
        Fixture fixture;
        fixture.show();
        auto* box = fixture.reach("volumeBox");
        const auto turn = [&] {
            QWheelEvent wheel({5, 5}, box->mapToGlobal(QPointF(5, 5)), {}, {0, 120}, {}, {}, {}, false);
            QApplication::sendEvent(box, &wheel);
        };
        turn();
        QCOMPARE(defaultInt(kAudioVolumeKey), 100);
        box->setFocus();
        turn();
        QCOMPARE(defaultInt(kAudioVolumeKey), 110);
    }

    void theRunsOverrideHolds() {
        Fixture fixture;
        standardUserDefaults().setOverride(kAutoAddKey, 1);
        fixture.show();
        fixture.click("autoAddCheck");
        QVERIFY(fixture.get<QAbstractButton>("autoAddCheck")->isChecked());
    }

    void keysClose() {
        Fixture fixture;
        QSignalSpy closing(&fixture.window, &PreferencesWindow::closing);
        fixture.show();
        QTest::keyClick(&fixture.window, Qt::Key_Escape);
        QVERIFY(!fixture.window.isVisible());
        fixture.show();
        QTest::keyClick(&fixture.window, Qt::Key_W, Qt::ControlModifier);
        QVERIFY(!fixture.window.isVisible());
        QCOMPARE(closing.count(), 2);
    }
};

QTEST_MAIN(PreferencesTest)
#include "tst_Preferences.moc"

#include "ui/preferences/PreferencesWindow.h"

#include "app/destinations/Destinations.h"
#include "app/watching/WatchFolder.h"
#include "convert/ConversionSettings.h"
#include "settings/Keys.h"
#include "settings/Settings.h"
#include "support/store/Defaults.h"
#include "ui/look/Icons.h"
#include "ui/preferences/DestinationsPage.h"
#include "ui/preferences/LabelStyles.h"
#include "ui/preferences/SettingChoices.h"
#include "ui/preferences/WatchFolderPage.h"
#include "ui/widgets/DestinationComboBox.h"
#include "ui/widgets/WindowMenu.h"
#include "ui_ContainerCompatible.h"
#include "ui_ContainerCustom.h"
#include "ui_ContainerFast.h"
#include "ui_PreferencesAdvanced.h"
#include "ui_PreferencesAudio.h"
#include "ui_PreferencesDestinations.h"
#include "ui_PreferencesGeneral.h"
#include "ui_PreferencesSubtitles.h"
#include "ui_PreferencesWatchFolder.h"
#include "ui_PreferencesWindow.h"

#include <QAction>
#include <QCloseEvent>
#include <QScrollArea>
#include <QScrollBar>

namespace {

constexpr int kSettingGap = 8;
constexpr int kMinimumWidth = 480;  // of a page
constexpr int kMinimumHeight = 384;
constexpr int kUsualWidth = 720;
constexpr int kUsualHeight = 536;

/// A scroll area as wide as its page, so that it only scrolls vertically.
class PageArea : public QScrollArea {
public:
    explicit PageArea(QWidget* page) {
        setFrameShape(QFrame::NoFrame);
        setWidgetResizable(true);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setFocusPolicy(Qt::NoFocus);
        setWidget(page);
        page->installEventFilter(this);
    }

    QSize minimumSizeHint() const override {
        const int bar = verticalScrollBar()->sizeHint().width();
        return QSize(widget()->minimumSizeHint().width() + bar, 0)
            .expandedTo({kMinimumWidth, kMinimumHeight});
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::LayoutRequest) updateGeometry();
        return QScrollArea::eventFilter(watched, event);
    }
};

}  // namespace

PreferencesWindow::PreferencesWindow(Destinations& destinations, WatchFolder& watchFolder, QWidget* parent)
    : QWidget(parent, Qt::Window), m_destinations(destinations), m_watchFolder(watchFolder) {
    Ui::PreferencesWindow ui;
    ui.setupUi(this);
    m_list = ui.pageList;
    m_pages = ui.pages;

    addPage<Ui::PreferencesGeneral>(tr("General"), QStringLiteral("page-general"));
    QWidget* audio = addPage<Ui::PreferencesAudio>(tr("Audio"), QStringLiteral("page-audio"));
    addPage<Ui::PreferencesSubtitles>(tr("Subtitles"), QStringLiteral("page-subtitles"));
    m_folders = new DestinationsPage(
        *addPage<Ui::PreferencesDestinations>(tr("Destinations"), QStringLiteral("page-destinations")),
        destinations);
    joinWatchFolder(
        *addPage<Ui::PreferencesWatchFolder>(tr("Watch Folder"), QStringLiteral("page-watchfolder")),
        watchFolder);
    addPage<Ui::PreferencesAdvanced>(tr("Advanced"), QStringLiteral("page-advanced"));

    m_customContainer = audio->findChild<QWidget*>(QStringLiteral("customContainer"));
    addPane<Ui::ContainerCompatible>(QStringLiteral("containerCompatible"));
    addPane<Ui::ContainerFast>(QStringLiteral("containerFast"));
    addPane<Ui::ContainerCustom>(QStringLiteral("containerCustom"));

    audio->findChild<QComboBox*>(QStringLiteral("languagePopUp"))->insertSeparator(1);
    addSubtitleEncodings(*findChild<QComboBox*>(QStringLiteral("encodingPopUp")));
    m_binder.bind(this);
    settings::ConversionPreset.onChange(this, [this] { selectConversionStyle(); });

    auto* closing = new QAction(this);
    closing->setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_W), QKeySequence(Qt::Key_Escape)});
    connect(closing, &QAction::triggered, this, &QWidget::close);
    addAction(closing);
    addWindowMenu(*this, *closing, [this] { Q_EMIT mainWindowRequested(); });

    connect(m_list, &QListWidget::currentRowChanged, m_pages, &QStackedWidget::setCurrentIndex);
    m_list->setCurrentRow(0);
    m_list->setFocus();
    applyStyle();
    refresh();
    resize(sizeHint().expandedTo({kUsualWidth, kUsualHeight}));
}

template <class Form>
QWidget* PreferencesWindow::addPage(const QString& name, const QString& icon) {
    auto* content = new QWidget;
    Form().setupUi(content);
    addPageFrame(content, name, icon);
    return content;
}

template <class Form>
void PreferencesWindow::addPane(const QString& name) {
    auto* pane = new QWidget(m_customContainer);
    Form().setupUi(pane);
    pane->setObjectName(name);
    pane->hide();
    m_customContainer->layout()->addWidget(pane);
}

void PreferencesWindow::addPageFrame(QWidget* content, const QString& name, const QString& icon) {
    auto* page = new QWidget;
    auto* restore = new QPushButton(tr("&Restore Defaults"));
    restore->setObjectName(QStringLiteral("restoreDefaults"));
    restore->setToolTip(tr("Put everything on this page back to how it came"));
    connect(restore, &QPushButton::clicked, this, [=, this] { restoreDefaults(page); });

    auto* buttons = new QHBoxLayout;
    buttons->setContentsMargins(3 * kSettingGap, kSettingGap, 3 * kSettingGap, 2 * kSettingGap);
    buttons->addStretch();
    buttons->addWidget(restore);
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(new PageArea(content));
    column->addLayout(buttons);
    m_pages->addWidget(page);
    m_list->addItem(new QListWidgetItem(symbolicIcon(icon), name));
}

void PreferencesWindow::selectConversionStyle() {
    const QLayout* panes = m_customContainer->layout();
    const int chosen = static_cast<int>(settings::ConversionPreset.value());
    for (int i = 0; i < panes->count(); ++i)
        panes->itemAt(i)->widget()->setVisible(i == chosen);
}

void PreferencesWindow::refresh() {
    const QList<QComboBox*> boxes = m_customContainer->findChildren<QComboBox*>();
    for (QComboBox* box : boxes)
        addAudioMethods(*box);
    m_binder.refresh();
    m_folders->refresh();
    selectConversionStyle();
}

void PreferencesWindow::showSetting(const QString& key) {
    for (int page = 0; page < m_pages->count(); ++page) {
        const QList<QWidget*> controls = m_pages->widget(page)->findChildren<QWidget*>();
        for (QWidget* control : controls) {
            if (!SettingsBinder::keysOf(*control).contains(key)) continue;
            m_list->setCurrentRow(page);
            control->setFocus();
            return;
        }
    }
}

void PreferencesWindow::restoreDefaults(const QWidget* page) {
    if (page->findChild<QWidget*>(QStringLiteral("watchfolderActive"))) m_watchFolder.forget();
    if (page->findChild<DestinationComboBox*>() && !m_destinations.forgetAll()) {
        // The folders are on the page, too.
        m_destinations.setDefaultDestination(
            static_cast<qsizetype>(settings::DefaultDestination.integerDefault));
        return;
    }
    m_binder.restoreDefaults(page);
    if (page->findChild<DestinationComboBox*>()) {
        m_destinations.rebuildDestinationPopUp();
        m_destinations.rebuildPreferencesDestinationPopUp();
    }
    refresh();
}

void PreferencesWindow::applyStyle() {
    styleLabels(*this);
    const QFontMetrics metrics(m_list->font());
    for (int i = 0; i < m_list->count(); ++i) {
        QListWidgetItem& page = *m_list->item(i);
        const int width = m_list->iconSize().width() + metrics.horizontalAdvance(page.text());
        const int height = qMax(m_list->iconSize().height(), metrics.height());
        page.setSizeHint({width + 4 * kSettingGap, height + 2 * kSettingGap});
    }
}

void PreferencesWindow::showEvent(QShowEvent* event) {
    if (!event->spontaneous()) refresh();
    QWidget::showEvent(event);
}

void PreferencesWindow::closeEvent(QCloseEvent* event) {
    Q_EMIT closing();
    QWidget::closeEvent(event);
}

void PreferencesWindow::changeEvent(QEvent* event) {
    static const QSet<QEvent::Type> looks = {QEvent::PaletteChange, QEvent::FontChange, QEvent::StyleChange,
                                             QEvent::LayoutDirectionChange};
    if (m_list && looks.contains(event->type())) applyStyle();
    QWidget::changeEvent(event);
}

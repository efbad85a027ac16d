#include "ui/PreferencesWindow.h"

#include "app/Destinations.h"
#include "convert/ConversionCommand.h"
#include "convert/ConversionSettings.h"
#include "settings/Keys.h"
#include "support/Defaults.h"
#include "support/FolderAccess.h"
#include "ui/Colors.h"
#include "ui/DestinationBox.h"
#include "ui/Icons.h"
#include "ui_ContainerCompatible.h"
#include "ui_ContainerCustom.h"
#include "ui_ContainerFast.h"
#include "ui_PreferencesAdvanced.h"
#include "ui_PreferencesAudio.h"
#include "ui_PreferencesDestinations.h"
#include "ui_PreferencesGeneral.h"
#include "ui_PreferencesSubtitles.h"
#include "ui_PreferencesWindow.h"

#include <QAction>
#include <QCloseEvent>
#include <QDir>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr int kGroupGap = 16;
constexpr int kSettingGap = 8;
constexpr int kLeastWidth = 480;  // of a page
constexpr int kLeastHeight = 384;
constexpr int kUsualWidth = 720;
constexpr int kUsualHeight = 536;

/// As wide as its page needs to be, so that nothing is cut off beside; what is too high scrolls.
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
        return QSize(widget()->minimumSizeHint().width() + bar, 0).expandedTo({kLeastWidth, kLeastHeight});
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::LayoutRequest) updateGeometry();
        return QScrollArea::eventFilter(watched, event);
    }
};

/// What the list calls an encoding for those who do not know its name; empty: no more than that.
QString writingOf(const QString& encoding) {
    struct Writing {
        QString name;
        QStringList encodings;
    };
    const auto tr = [](const char* text) { return PreferencesWindow::tr(text); };
    static const std::array writings = {
        Writing{tr("Western European"), {"CP1252", "LATIN1", "ISO-8859-1", "ISO-8859-15"}},
        Writing{tr("Central European"), {"CP1250", "LATIN2", "ISO-8859-2"}},
        Writing{tr("South European"), {"LATIN3", "ISO-8859-3"}},
        Writing{tr("Southeast European"), {"ISO-8859-16"}},
        Writing{tr("Nordic"), {"LATIN6", "ISO-8859-10"}},
        Writing{tr("Baltic"), {"CP1257", "LATIN4", "LATIN7", "ISO-8859-4", "ISO-8859-13"}},
        Writing{tr("Celtic"), {"LATIN8", "ISO-8859-14"}},
        Writing{tr("Cyrillic"), {"CP1251", "ISO-8859-5"}},
        Writing{tr("Greek"), {"CP1253", "ISO-8859-7"}},
        Writing{tr("Turkish"), {"CP1254", "LATIN5", "ISO-8859-9"}},
        Writing{tr("Hebrew"), {"CP1255", "ISO-8859-8"}},
        Writing{tr("Arabic"), {"CP1256", "ISO-8859-6"}},
        Writing{tr("Thai"), {"CP874", "ISO-8859-11"}},
        Writing{tr("Vietnamese"), {"CP1258"}},
        Writing{tr("Chinese, simplified"), {"CP936"}},
    };
    const auto* found = std::ranges::find_if(
        writings, [&](const Writing& writing) { return writing.encodings.contains(encoding); });
    return found == writings.end() ? QString() : found->name;
}

void addEncodings(QComboBox& box) {
    const QStringList& encodings = subtitleEncodings();
    box.addItem(PreferencesWindow::tr("Automatic (UTF-8 or UTF-16)"), 0);
    for (int i = 2; i < encodings.size(); ++i) {
        // That part of the standard was given up; no converter has it.
        if (encodings[i] == u"ISO-8859-12") continue;
        const QString writing = writingOf(encodings[i]);
        box.addItem(writing.isEmpty() ? encodings[i] : QStringLiteral("%1 – %2").arg(encodings[i], writing),
                    i);
    }
}

/// What a kind of audio can become. Stereo is not blown up to 5.1, unless that is what is stored.
void addMethods(QComboBox& box) {
    constexpr std::array kSurroundMethods = {1, 3};
    const std::array names = {PreferencesWindow::tr("AAC in stereo"), PreferencesWindow::tr("AAC in 5.1"),
                              PreferencesWindow::tr("AC3 in stereo"), PreferencesWindow::tr("AC3 in 5.1"),
                              PreferencesWindow::tr("Copy as it is")};
    const bool isStereo = box.property("methods").toString() == u"stereo";
    const qint64 stored = defaultInt(SettingsBinder::keysOf(box).first());
    box.clear();
    for (int method = 0; method < static_cast<int>(names.size()); ++method) {
        const bool widens = isStereo && std::ranges::find(kSurroundMethods, method) != kSurroundMethods.end();
        if (!widens || method == stored) box.addItem(names.at(static_cast<size_t>(method)), method);
    }
}

/// The first line of a page keeps the page's margin alone; any other begins a new group.
bool isFirstOfPage(QLabel& label) {
    const auto* grid = qobject_cast<QGridLayout*>(label.parentWidget()->layout());
    return grid && grid->contentsMargins().top() > 0 && grid->itemAtPosition(0, 0)->widget() == &label;
}

void dressHeading(QLabel& label) {
    QFont font;
    font.setBold(true);
    label.setFont(font);
    label.setContentsMargins(0, isFirstOfPage(label) ? 0 : kGroupGap, 0, kSettingGap);
}

/// Small, in the secondary colour; under a check box or a radio button in line with its text. Read aloud
/// as the description of the control that it explains.
void dressHelp(QLabel& label, const QWidget& root) {
    constexpr qreal kSmall = 0.9;
    QFont font = root.font();
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * kSmall);
    else
        font.setPixelSize(qRound(font.pixelSize() * kSmall));
    label.setFont(font);
    QPalette palette;
    palette.setColor(QPalette::WindowText, colors::secondaryText(root.palette()));
    label.setPalette(palette);

    QString name = label.objectName();
    if (!name.endsWith(u"Help")) return;
    label.setContentsMargins(0, 2, 0, kSettingGap + 2);
    name.chop(4);
    auto* control = root.findChild<QWidget*>(name);
    if (!control) return;
    control->setAccessibleDescription(label.text());
    if (!qobject_cast<QAbstractButton*>(control)) return;
    const QStyle& style = *control->style();
    const bool isCheck = qobject_cast<QCheckBox*>(control) != nullptr;
    label.setIndent(
        style.pixelMetric(isCheck ? QStyle::PM_IndicatorWidth : QStyle::PM_ExclusiveIndicatorWidth, nullptr,
                          control) +
        style.pixelMetric(isCheck ? QStyle::PM_CheckBoxLabelSpacing : QStyle::PM_RadioButtonLabelSpacing,
                          nullptr, control));
}

}  // namespace

PreferencesWindow::PreferencesWindow(Destinations& destinations, QWidget* parent)
    : QWidget(parent, Qt::Window), m_destinations(destinations) {
    Ui::PreferencesWindow ui;
    ui.setupUi(this);
    m_list = ui.pageList;
    m_pages = ui.pages;

    addPage<Ui::PreferencesGeneral>(tr("General"), QStringLiteral("page-general"));
    QWidget* audio = addPage<Ui::PreferencesAudio>(tr("Audio"), QStringLiteral("page-audio"));
    addPage<Ui::PreferencesSubtitles>(tr("Subtitles"), QStringLiteral("page-subtitles"));
    addPage<Ui::PreferencesDestinations>(tr("Destinations"), QStringLiteral("page-destinations"));
    addPage<Ui::PreferencesAdvanced>(tr("Advanced"), QStringLiteral("page-advanced"));

    m_customContainer = audio->findChild<QWidget*>(QStringLiteral("customContainer"));
    addPane<Ui::ContainerCompatible>(QStringLiteral("containerCompatible"));
    addPane<Ui::ContainerFast>(QStringLiteral("containerFast"));
    addPane<Ui::ContainerCustom>(QStringLiteral("containerCustom"));

    audio->findChild<QComboBox*>(QStringLiteral("languagePopUp"))->insertSeparator(1);
    addEncodings(*findChild<QComboBox*>(QStringLiteral("encodingPopUp")));
    joinDestinations();
    m_binder.bind(this);
    connect(&m_binder, &SettingsBinder::changed, this, &PreferencesWindow::settingWasChanged);

    auto* closing = new QAction(this);
    closing->setShortcuts({QKeySequence(Qt::CTRL | Qt::Key_W), QKeySequence(Qt::Key_Escape)});
    connect(closing, &QAction::triggered, this, &QWidget::close);
    addAction(closing);

    connect(m_list, &QListWidget::currentRowChanged, m_pages, &QStackedWidget::setCurrentIndex);
    m_list->setCurrentRow(0);
    m_list->setFocus();
    dress();
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

void PreferencesWindow::joinDestinations() {
    auto* box = findChild<DestinationBox*>(QStringLiteral("preferencesDestinationPopUp"));
    auto* add = findChild<QPushButton*>(QStringLiteral("addFolder"));
    auto* clear = findChild<QPushButton*>(QStringLiteral("clearFolders"));
    DestinationPopUp& popUp = m_destinations.preferencesDestinationPopUp();
    box->setPopUp(&popUp);
    connect(&popUp, &DestinationPopUp::changed, this, &PreferencesWindow::showFolders);

    const auto choose = [this] { m_destinations.chooseNewDestination(DestinationPopUp::Place::Preferences); };
    const auto forget = [this] {
        m_destinations.clearDestinations();
        Q_EMIT settingChanged(kDestinationBookmarksKey);
    };
    connect(box, &DestinationBox::itemChosen, this, [this](qsizetype index) {
        m_destinations.setDefaultDestination(index);
        Q_EMIT settingChanged(kDefaultDestinationKey);
    });
    connect(box, &DestinationBox::chooseRequested, this, choose);
    connect(box, &DestinationBox::clearRequested, this, forget);
    connect(add, &QPushButton::clicked, this, choose);
    connect(clear, &QPushButton::clicked, this, forget);
}

void PreferencesWindow::showFolders() {
    auto* list = findChild<QListWidget*>(QStringLiteral("folderList"));
    const QVariantList bookmarks = defaultArray(kDestinationBookmarksKey).value_or(QVariantList());
    const QVariantList names = defaultArray(kDestinationNamesKey).value_or(QVariantList());
    list->clear();
    for (qsizetype i = 0; i < bookmarks.size(); ++i) {
        QString problem;
        const auto folder = folderaccess::resolveBookmark(bookmarks[i].toByteArray(), problem);
        auto* item =
            new QListWidgetItem(folder ? QDir::toNativeSeparators(*folder)
                                       : tr("%1 – cannot be used now").arg(names.value(i).toString()),
                                list);
        item->setToolTip(folder ? *folder : problem);
        item->setFlags(Qt::ItemIsEnabled);
    }
    findChild<QPushButton*>(QStringLiteral("clearFolders"))->setEnabled(!bookmarks.isEmpty());
}

void PreferencesWindow::selectConversionStyle(int preset) {
    const QLayout* panes = m_customContainer->layout();
    const int chosen = preset == ConversionSettings::kCompatible || preset == ConversionSettings::kCustom
                           ? preset
                           : ConversionSettings::kFast;
    for (int i = 0; i < panes->count(); ++i)
        panes->itemAt(i)->widget()->setVisible(i == chosen);
}

void PreferencesWindow::refresh() {
    const QList<QComboBox*> boxes = m_customContainer->findChildren<QComboBox*>();
    for (QComboBox* box : boxes)
        addMethods(*box);
    m_binder.refresh();
    showFolders();
    const qint64 preset = defaultInt(kConversionPresetKey);
    selectConversionStyle(std::in_range<int>(preset) ? static_cast<int>(preset) : ConversionSettings::kFast);
}

void PreferencesWindow::restoreDefaults(const QWidget* page) {
    m_binder.restoreDefaults(page);
    if (page->findChild<DestinationBox*>()) {
        m_destinations.rebuildDestinationPopUp();
        m_destinations.rebuildPreferencesDestinationPopUp();
    }
    refresh();
}

void PreferencesWindow::settingWasChanged(const QString& key) {
    if (key == kConversionPresetKey) Q_EMIT conversionStyleChosen();
    Q_EMIT settingChanged(key);
}

/// Gives the labels their fonts and colours, after those of the desktop.
void PreferencesWindow::dress() {
    const QList<QLabel*> labels = findChildren<QLabel*>();
    // By themselves labels follow the direction of their text, which need not be that of the window.
    const Qt::Alignment leading = (isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute;
    for (QLabel* label : labels) {
        label->setAlignment(leading | Qt::AlignVCenter);
        const QString role = label->property("role").toString();
        if (role == u"heading") dressHeading(*label);
        if (role == u"help") dressHelp(*label, *this);
    }
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
    if (m_list && looks.contains(event->type())) dress();
    QWidget::changeEvent(event);
}

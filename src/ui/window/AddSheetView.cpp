#include "ui/window/AddSheetView.h"

#include "app/AddSheet.h"
#include "app/destinations/Destinations.h"
#include "settings/Settings.h"
#include "support/base/Collections.h"
#include "support/base/Format.h"
#include "ui/look/Accessibility.h"
#include "ui/look/Colors.h"
#include "ui/look/Motion.h"
#include "ui/widgets/Mnemonics.h"
#include "ui/window/Posters.h"
#include "ui_AddSheetView.h"

#include <QFileInfo>
#include <QKeyEvent>
#include <QPainter>
#include <QVariantAnimation>

#include <utility>

AddSheetView::AddSheetView(QWidget* parent)
    : QWidget(parent),
      m_ui(std::make_unique<Ui::AddSheetView>()),
      m_content(new QWidget(this)),
      m_animation(new QVariantAnimation(this)) {
    m_ui->setupUi(m_content);
    m_content->installEventFilter(this);
    setUpFonts();
    m_ui->noticeLabel->setTone(colors::Tone::Warning);
    m_ui->noticeLabel->hide();
    m_ui->keepFoldersBox->hide();
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    accessibility::setRole(*this, QAccessible::Grouping);
    hide();
    connect(m_animation, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { setSheetHeight(value.toInt()); });
    connect(m_animation, &QVariantAnimation::finished, this, &AddSheetView::finishSliding);
}

AddSheetView::~AddSheetView() = default;

void AddSheetView::setUpFonts() {
    constexpr double kLarger = 1.25;
    QFont large = font();
    large.setWeight(QFont::DemiBold);
    if (large.pointSizeF() > 0) large.setPointSizeF(large.pointSizeF() * kLarger);
    m_ui->nameLabel->setFont(large);
    m_ui->informationLabel->setTone(colors::Tone::Secondary);
    QPalette secondary = palette();
    secondary.setColor(QPalette::WindowText, colors::secondaryText(palette()));
    m_ui->waitingLabel->setPalette(secondary);
}

void AddSheetView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    const bool isLook = event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange;
    if (isLook) setUpFonts();
}

void AddSheetView::setSheet(AddSheet* sheet, Destinations* destinations) {
    m_sheet = sheet;
    m_ui->destinationPopUp->setPopUp(&destinations->destinationPopUp());
    connect(m_ui->destinationPopUp, &DestinationComboBox::itemChosen, this,
            [destinations](qsizetype index) { destinations->destinationPopUp().choose(index); });
    connect(m_ui->destinationPopUp, &DestinationComboBox::chooseRequested, this,
            [destinations] { destinations->chooseNewDestination(DestinationPopUp::Place::AddSheet); });
    connect(m_ui->audioPopUp, &QComboBox::activated, sheet, &AddSheet::selectAudio);
    connect(m_ui->addButton, &QPushButton::clicked, sheet, &AddSheet::addToQueue);
    connect(m_ui->addAllButton, &QPushButton::clicked, sheet, &AddSheet::addAll);
    connect(m_ui->keepFoldersBox, &QCheckBox::clicked, sheet, &AddSheet::setKeepsFolders);
    connect(m_ui->cancelButton, &QPushButton::clicked, sheet, &AddSheet::cancelAdd);
    connect(m_ui->cancelAllButton, &QToolButton::clicked, sheet, &AddSheet::cancelAll);
    connect(m_ui->planStrip, &PlanStrip::subtitleFileRemoved, this, &AddSheetView::removeSubtitleFile);
    connect(sheet, &AddSheet::changed, this, &AddSheetView::refresh);
    connect(sheet, &AddSheet::planChanged, this, &AddSheetView::refreshPlan);
    connect(sheet, &AddSheet::planChanged, this, &AddSheetView::refreshNotice);
    connect(sheet, &AddSheet::topConstraintChanged, this, [this](double height) { slide(height > 0); });
    refresh();
}

void AddSheetView::setAddButtonTitle(const QString& title) {
    m_ui->addButton->setText(mnemonics::added(title, mnemonics::takenBeside(*m_ui->addButton)));
}

void AddSheetView::refresh() {
    if (isLeaving()) return;
    const bool isReady = !m_sheet->informationString().isEmpty();
    const qsizetype waiting = m_sheet->waitingCount();
    const QString name = QFileInfo(m_sheet->path()).fileName();
    const bool isOther = std::exchange(m_path, m_sheet->path()) != m_sheet->path();
    const bool wasReady = std::exchange(m_isReady, isReady);
    if (!isReady) {
        m_ui->informationLabel->setFocusPolicy(Qt::TabFocus);
        if ((isOther || wasReady) && hasFocusWithin() && !m_ui->cancelAllButton->hasFocus())
            m_ui->informationLabel->setFocus();
    }
    setAccessibleName(tr("Add “%1”").arg(name));
    setAccessibleDescription(m_sheet->informationString());
    m_ui->nameLabel->setText(name);
    m_ui->waitingLabel->setText(waiting > 0 ? tr("%n more to come", nullptr, static_cast<int>(waiting))
                                            : QString());
    m_ui->informationLabel->setText(isReady ? m_sheet->informationString() : tr("Reading the movie…"));
    m_ui->busyBar->setVisible(!isReady);
    m_ui->cancelAllButton->setVisible(waiting > 0);
    m_ui->destinationPopUp->setEnabled(isReady);
    m_ui->addButton->setEnabled(isReady);
    m_ui->addAllButton->setEnabled(isReady);
    m_ui->addAllButton->setVisible(waiting > 0);
    m_ui->addAllButton->setText(tr("Add A&ll (%1)").arg(waiting + 1));
    refreshAudio();
    if (m_posters) refreshPoster();
    refreshPlan();
    refreshNotice();
    if (!isReady) return;
    if (window()->focusWidget() == m_ui->informationLabel) m_ui->addButton->setFocus();
    m_ui->informationLabel->setFocusPolicy(Qt::NoFocus);
}

bool AddSheetView::hasFocusWithin() const {
    const QWidget* focus = window()->focusWidget();
    return focus && isAncestorOf(focus);
}

void AddSheetView::setPosters(Posters* posters) {
    m_posters = posters;
    connect(posters, &Posters::changed, this, &AddSheetView::refreshPoster);
    settings::ShowPosters.onChange(this, [this] { refreshPoster(); });
    refreshPoster();
}

void AddSheetView::refreshPoster() {
    m_ui->posterFrame->setVisible(settings::ShowPosters.value());
    if (isLeaving()) return;
    const bool isReady = !m_sheet->informationString().isEmpty();
    m_ui->posterFrame->setPoster(isReady ? m_posters->poster(m_sheet->path(), m_sheet->runtimeSeconds())
                                         : QPixmap());
}

/// Nothing changes while it slides away.
bool AddSheetView::isLeaving() const {
    return !m_sheet->isShown() && m_sheet->path().isEmpty();
}

void AddSheetView::refreshAudio() {
    const QStringList tracks = m_sheet->audioItems();
    m_ui->audioPopUp->setTracks(tracks, m_sheet->audioLabels());
    m_ui->audioPopUp->setCurrentIndex(static_cast<int>(m_sheet->selectedAudio()));
    m_ui->audioPopUp->setEnabled(collections::isNonEmptyCollection(tracks));
    m_ui->audioPopUp->setPlaceholderText(m_sheet->isScanning() ? QString() : tr("No sound"));
}

void AddSheetView::refreshPlan() {
    if (!isLeaving()) m_ui->planStrip->setPlan(m_sheet->plan());
}

void AddSheetView::refreshNotice() {
    if (isLeaving()) return;
    const QString notice = m_sheet->notice();
    const QString folder = m_sheet->droppedFolder();
    if (notice != m_ui->noticeLabel->text()) accessibility::announce(*this, notice);
    m_ui->noticeLabel->setText(notice);
    m_ui->addButton->setAccessibleDescription(notice);
    m_ui->keepFoldersBox->setToolTip(
        tr("The output goes into “%1” below the destination").arg(folder).toHtmlEscaped());
    m_ui->keepFoldersBox->setChecked(m_sheet->keepsFolders());
    m_ui->keepFoldersBox->setVisible(!folder.isEmpty());
    m_ui->noticeLabel->setVisible(!notice.isEmpty());
}

void AddSheetView::removeSubtitleFile() {
    m_sheet->removeSubtitleFile();
    m_ui->addButton->setFocus();  // The button that was pressed is gone.
}

int AddSheetView::wholeHeight() const {
    return qMax(static_cast<int>(AddSheet::kShown), m_content->minimumSizeHint().height());
}

void AddSheetView::slide(bool shown) {
    const int end = shown ? wholeHeight() : 0;
    if (shown) {
        show();
        (m_isReady ? static_cast<QWidget*>(m_ui->addButton) : m_ui->informationLabel)->setFocus();
    }
    m_animation->stop();
    m_animation->setDuration(isVisible() ? motion::duration(*this) : 0);
    m_animation->setStartValue(m_height);
    m_animation->setEndValue(end);
    if (m_animation->duration() == 0) {
        setSheetHeight(end);
        finishSliding();
    } else {
        m_animation->start();
    }
}

void AddSheetView::setSheetHeight(int height) {
    m_height = height;
    updateGeometry();
}

/// For the case that its lines have changed.
void AddSheetView::fitContent() {
    if (m_height > 0 && m_height != wholeHeight()) setSheetHeight(wholeHeight());
}

void AddSheetView::finishSliding() {
    fitContent();
    if (m_height > 0) return;
    const bool hadFocus = hasFocusWithin();
    hide();
    if (hadFocus) Q_EMIT focusReleased();
}

QSize AddSheetView::sizeHint() const {
    return {m_content->sizeHint().width(), m_height};
}

QSize AddSheetView::minimumSizeHint() const {
    return {m_content->minimumSizeHint().width(), m_height};
}

void AddSheetView::resizeEvent(QResizeEvent*) {
    placeContent();
}

/// The content slides down from behind the toolbar.
void AddSheetView::placeContent() {
    m_content->setGeometry(0, height() - wholeHeight(), width(), wholeHeight());
}

bool AddSheetView::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) {
        if (m_animation->state() == QAbstractAnimation::Stopped) fitContent();
        placeContent();
    }
    return QWidget::eventFilter(watched, event);
}

void AddSheetView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        m_ui->cancelButton->click();
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        m_ui->addButton->click();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void AddSheetView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    painter.fillRect(QRect(0, height() - 1, width(), 1), colors::hairline(palette()));
}

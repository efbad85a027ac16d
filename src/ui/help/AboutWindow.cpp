#include "ui/help/AboutWindow.h"

#include "support/base/ApplicationInfo.h"
#include "support/base/Format.h"
#include "support/base/Text.h"
#include "support/processes/Dispatch.h"
#include "support/reports/HostInformation.h"
#include "support/reports/QuillonLib.h"
#include "tool/Tool.h"
#include "tool/cage/Cage.h"
#include "ui/look/Colors.h"
#include "ui/look/Icons.h"
#include "ui/look/Placement.h"
#include "ui_AboutWindow.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPointer>

namespace {

constexpr int kIconSize = 96;
constexpr int kMakersPage = 3;

}  // namespace

AboutWindow::AboutWindow(const QString& version, const QString& build, QWidget* parent)
    : QWidget(parent, Qt::Dialog), m_ui(std::make_unique<Ui::AboutWindow>()) {
    setAttribute(Qt::WA_DeleteOnClose);
    m_ui->setupUi(this);
    setWindowTitle(tr("About %1").arg(ApplicationInfo::name()));
    m_ui->iconLabel->setPixmap(applicationIcon().pixmap(QSize(kIconSize, kIconSize), devicePixelRatioF()));
    QFont large = m_ui->nameLabel->font();
    large.setPointSize(22);
    large.setWeight(QFont::Medium);
    m_ui->nameLabel->setFont(large);
    m_ui->nameLabel->setText(ApplicationInfo::name());
    m_ui->versionLabel->setText(version + u'\n' + build);
    m_ui->toolLabel->setText(tr("Tool: %1").arg("ffmpeg"));
    // It has to be asked, which takes a moment: the system may have brought another one since the last start.
    dispatch_async_back([self = QPointer(this)] {
        const QString told = tool::version();
        dispatch_async_main([self, told] {
            if (self) self->showTool(told);
        });
    });
    m_ui->cageLabel->setText(tr("Cage: %1").arg(cage::description()));
    QPalette secondary = m_ui->versionLabel->palette();
    secondary.setColor(QPalette::WindowText, colors::secondaryText(secondary));
    m_ui->versionLabel->setPalette(secondary);
    m_ui->toolLabel->setPalette(secondary);
    m_ui->cageLabel->setPalette(secondary);
    connect(m_ui->closeButton, &QAbstractButton::clicked, this, &QWidget::close);
    connect(m_ui->copyButton, &QAbstractButton::clicked, this, &AboutWindow::copyVersion);
    connect(m_ui->webPageButton, &QAbstractButton::clicked, this,
            [] { QuillonLib::shared().openURL(kMakersPage); });
    m_ui->closeButton->setFocus();
    centreOver(*this, parent);
}

AboutWindow::~AboutWindow() = default;

void AboutWindow::showTool(const QString& version) {
    if (version.isEmpty()) return;
    m_ui->toolLabel->setText(tool::isOurs(version)
                                 ? tr("Tool: ffmpeg %1, built for %2").arg(version, ApplicationInfo::name())
                                 : tr("Tool: ffmpeg %1 of the system").arg(version));
}

/// The first lines of a question to support.
void AboutWindow::copyVersion() const {
    QGuiApplication::clipboard()->setText(
        makeString("%@ %@ (%i), %@", ApplicationInfo::name(), ApplicationInfo::version(),
                   ApplicationInfo::buildNumber(), operatingSystemVersionString()));
    m_ui->copyButton->setText(tr("Copied"));
}

void AboutWindow::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Cancel) || event->matches(QKeySequence::Close)) {
        close();
    } else {
        QWidget::keyPressEvent(event);
    }
}

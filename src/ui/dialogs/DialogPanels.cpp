#include "ui/dialogs/DialogPanels.h"

#include "support/base/Files.h"
#include "support/base/Texts.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>

namespace {

/// "*.mkv *.[mM][kK][vV]": some desktops match patterns case-sensitively. The plain pattern is first, because
/// a save panel may take the extension from it.
QString patterns(const QStringList& extensions) {
    QStringList result;
    for (const QString& extension : extensions) {
        QString anyCase;
        for (const QChar letter : extension)
            anyCase +=
                letter.isLetter() ? u'[' + letter.toLower() + letter.toUpper() + u']' : QString(letter);
        result << "*." + extension << "*." + anyCase;
    }
    return result.join(u' ');
}

QStringList localPaths(const QFileDialog& dialog) {
    QStringList paths;
    for (const QUrl& url : dialog.selectedUrls()) {
        if (url.isLocalFile()) paths.append(QFileInfo(url.toLocalFile()).absoluteFilePath());
    }
    return paths;
}

void startIn(QFileDialog& dialog, const QString& folder) {
    if (QFileInfo(folder).isDir()) dialog.setDirectory(folder);
}

}  // namespace

DialogPanels::~DialogPanels() {
    for (const QPointer<QWidget>& dialog : std::as_const(m_open))
        delete dialog.data();
}

QWidget* DialogPanels::window(Over over) const {
    // A panel cannot be shown over a closed window.
    for (QWidget* candidate :
         {(over == Over::Preferences ? m_preferencesWindow : m_mainWindow).data(), m_mainWindow.data()}) {
        if (candidate && candidate->isVisible()) return candidate;
    }
    return nullptr;
}

void DialogPanels::keep(QWidget* dialog) {
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAttribute(Qt::WA_QuitOnClose, false);
    m_open.removeAll(QPointer<QWidget>());
    m_open.append(dialog);
}

QFileDialog* DialogPanels::makeDialog(Over over, const QString& title) {
    auto* dialog = new QFileDialog(window(over), title);
    dialog->setSupportedSchemes({"file"});
    keep(dialog);
    return dialog;
}

void DialogPanels::chooseFiles(const QStringList& extensions,
                               std::function<void(const QStringList&)> chosen) {
    QFileDialog* dialog = makeDialog(Over::MainWindow, Texts::tr("Add Movies"));
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setOption(QFileDialog::HideNameFilterDetails);
    dialog->setNameFilters({Texts::tr("Movies and subtitles") + " (" + patterns(extensions) + u')',
                            Texts::tr("All files") + " (*)"});
    QObject::connect(dialog, &QDialog::accepted, dialog, [dialog, chosen = std::move(chosen)] {
        if (const QStringList paths = localPaths(*dialog); !paths.isEmpty()) chosen(paths);
    });
    dialog->open();
}

void DialogPanels::chooseFolder(Over over, const QString& startingIn,
                                std::function<void(const QString&)> chosen) {
    QFileDialog* dialog = makeDialog(over, Texts::tr("Choose a Folder"));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    startIn(*dialog, startingIn);
    QObject::connect(dialog, &QDialog::accepted, dialog, [dialog, chosen = std::move(chosen)] {
        if (const QStringList paths = localPaths(*dialog); !paths.isEmpty()) chosen(paths.first());
    });
    dialog->open();
}

void DialogPanels::saveFile(const QString& startingIn, const QString& fileName, const QString& extension,
                            std::function<void(const QString&)> chosen) {
    QFileDialog* dialog = makeDialog(Over::MainWindow, Texts::tr("Save Movie"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setNameFilters({Texts::tr("Movies") + " (" + patterns({extension}) + u')'});
    startIn(*dialog, startingIn);
    // Qt's own panel interprets quotation marks as those around several names.
    const bool isQtsOwn = dialog->findChild<QLineEdit*>("fileNameEdit") != nullptr;
    dialog->selectFile(isQtsOwn ? QString(fileName).replace(u'"', u'”') : fileName);
    QObject::connect(dialog, &QDialog::accepted, dialog, [=, this, chosen = std::move(chosen)] {
        const QString path = localPaths(*dialog).value(0);
        const QString ending = u'.' + extension;
        if (path.isEmpty()) return;
        if (path.endsWith(ending, Qt::CaseInsensitive)) return chosen(path);
        // The panel regards the end of "Dr. Who" as an extension.
        const QFileInfo given(path);
        const QString completed = given.dir().filePath(files::fittingFileName(given.fileName(), ending));
        if (!QFileInfo::exists(completed)) return chosen(completed);
        askToReplace(
            completed, [=] { chosen(completed); },
            [=, this] { saveFile(given.path(), QFileInfo(completed).fileName(), extension, chosen); });
    });
    dialog->open();
    // Qt adds the extension to the result of a native panel, after that one asked about the name without it.
    const bool isNative = dialog->testAttribute(Qt::WA_DontShowOnScreen);
    if (!isNative) dialog->setDefaultSuffix(extension);
}

void DialogPanels::askToReplace(const QString& path, const std::function<void()>& replace,
                                const std::function<void()>& keepIt) {
    auto* question = new QMessageBox(
        QMessageBox::Warning, QFileDialog::tr("Save As"),
        QFileDialog::tr("%1 already exists.\nDo you want to replace it?").arg(QFileInfo(path).fileName()),
        QMessageBox::Yes | QMessageBox::No, window(Over::MainWindow));
    question->setTextFormat(Qt::PlainText);
    question->setDefaultButton(QMessageBox::No);
    keep(question);
    QObject::connect(question, &QDialog::finished, question,
                     [=](int answer) { answer == QMessageBox::Yes ? replace() : keepIt(); });
    question->open();
}

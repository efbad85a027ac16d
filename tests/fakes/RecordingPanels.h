#pragma once

#include "support/desktop/FilePanels.h"

#include <QList>

/// Records the requested panels and answers each with what the test prepared; an empty answer is a cancelled
/// panel.
class RecordingPanels : public FilePanels {
public:
    struct Request {
        QString kind;
        QString startingIn;
        QString fileName;
        QString extension;
        Over over = Over::MainWindow;
    };

    void chooseFiles(const QStringList& extensions, std::function<void(const QStringList&)> chosen) override {
        requests.append({"files", {}, {}, extensions.join(' ')});
        if (!files.isEmpty()) chosen(files);
    }
    void chooseFolder(Over over, const QString& startingIn,
                      std::function<void(const QString&)> chosen) override {
        requests.append({"folder", startingIn, {}, {}, over});
        if (!folder.isEmpty()) chosen(folder);
    }
    void saveFile(const QString& startingIn, const QString& fileName, const QString& extension,
                  std::function<void(const QString&)> chosen) override {
        requests.append({"save", startingIn, fileName, extension});
        if (!savedAs.isEmpty()) chosen(savedAs);
    }

    QStringList files;
    QString folder;
    QString savedAs;
    QList<Request> requests;
};

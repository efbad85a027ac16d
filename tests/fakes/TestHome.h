#pragma once

#include "fakes/RecordingDesktop.h"
#include "fakes/RecordingPresenter.h"
#include "support/store/Defaults.h"

#include <QTemporaryDir>
#include <QTest>

/// A separate home folder for each test function: settings, private data, presenter and desktop.
class TestHome {
public:
    TestHome();
    ~TestHome();
    TestHome(const TestHome&) = delete;
    TestHome& operator=(const TestHome&) = delete;

    QString path(const QString& name = {}) const { return QDir(m_folder.path()).filePath(name); }
    /// Creates a file below the home folder, and its parent folders.
    QString write(const QString& name, const QByteArray& contents = {}) const;

    RecordingPresenter presenter;
    RecordingDesktop desktop;

private:
    QTemporaryDir m_folder;
};

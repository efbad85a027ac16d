#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class AboutWindow;
}

/// Shows the version, the build, the conversion tool, and the licences of the components of the application.
/// Deletes itself when it is closed. Main thread only.
class AboutWindow : public QWidget {
    Q_OBJECT

public:
    /// `version` and `build` are shown as they are, for example "Version: 1.0.0".
    AboutWindow(const QString& version, const QString& build, QWidget* parent = nullptr);
    ~AboutWindow() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// Empty: the tool has none to say.
    void showTool(const QString& version);
    void copyVersion() const;

    std::unique_ptr<Ui::AboutWindow> m_ui;
};

#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class AboutWindow;
}

/// What the application is: version, build, and the licences of the parts that it is made with. Deletes
/// itself when it is closed.
class AboutWindow : public QWidget {
    Q_OBJECT

public:
    /// `version` and `build` as the application words them.
    AboutWindow(const QString& version, const QString& build, QWidget* parent = nullptr);
    ~AboutWindow() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void copyVersion() const;

    std::unique_ptr<Ui::AboutWindow> m_ui;
};

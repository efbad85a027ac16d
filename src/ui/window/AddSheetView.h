#pragma once

#include <QWidget>

#include <memory>

class AddSheet;
class Destinations;
class Posters;
class QVariantAnimation;

namespace Ui {
class AddSheetView;
}

/// The view of the add sheet: the movie, its plan, and the choices. Slides down at the top of the window.
/// While the movie is read, the line that says so has the keyboard focus: keys that were typed too early do
/// nothing there, neither to the list nor to the movie.
/// Main thread only.
class AddSheetView : public QWidget {
    Q_OBJECT

public:
    explicit AddSheetView(QWidget* parent = nullptr);
    ~AddSheetView() override;

    /// Both must outlive the view.
    void setSheet(AddSheet* sheet, Destinations* destinations);
    /// After setSheet(); `posters` must outlive the view.
    void setPosters(Posters* posters);
    void setAddButtonTitle(const QString& title);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The sheet is hidden and had the keyboard focus.
    void focusReleased();

protected:
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void setUpFonts();
    void refresh();
    void refreshAudio();
    void refreshPoster();
    void refreshPlan();
    void refreshNotice();
    void removeSubtitleFile();
    void slide(bool shown);
    void setSheetHeight(int height);
    void placeContent();
    void fitContent();
    void finishSliding();
    int wholeHeight() const;
    bool hasFocusWithin() const;
    bool isLeaving() const;

    std::unique_ptr<Ui::AddSheetView> m_ui;
    QWidget* m_content = nullptr;  ///< Keeps its height while the sheet slides.
    AddSheet* m_sheet = nullptr;
    Posters* m_posters = nullptr;
    QVariantAnimation* m_animation = nullptr;
    int m_height = 0;
    QString m_path;          ///< Of the movie that is shown.
    bool m_isReady = false;  ///< There is a movie to confirm.
};

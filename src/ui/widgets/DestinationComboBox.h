#pragma once

#include <QComboBox>
#include <QPointer>

class DestinationPopUp;

/// Shows the items and the selection of a DestinationPopUp and tells what the user chose from it. It changes
/// nothing itself: whoever hears a signal selects in the DestinationPopUp, and the box follows.
class DestinationComboBox : public QComboBox {
    Q_OBJECT

public:
    explicit DestinationComboBox(QWidget* parent = nullptr);

    /// Follows `popUp`, which the caller owns, until the next call; null: none, the box is empty.
    void setPopUp(DestinationPopUp* popUp);

    void showPopup() override;
    void hidePopup() override;

Q_SIGNALS:
    /// One of the destinations, by its position in the DestinationPopUp.
    void itemChosen(qsizetype index);
    void chooseRequested();
    void clearRequested();

private:
    void fill();
    void showSelected();
    void setCommandsEnabled(bool enabled);
    void choose(int index);

    QPointer<DestinationPopUp> m_popUp;
};

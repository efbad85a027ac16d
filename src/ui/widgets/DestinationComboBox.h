#pragma once

#include "ui/widgets/ElidedComboBox.h"

#include <QPointer>

class DestinationPopUp;

/// Shows the items and the selection of a DestinationPopUp and emits the user's choices. It changes nothing
/// itself: the receiver of a signal selects in the DestinationPopUp, and the box follows. Main thread only.
class DestinationComboBox : public ElidedComboBox {
    Q_OBJECT

public:
    explicit DestinationComboBox(QWidget* parent = nullptr);

    /// Shows `popUp`, which the caller owns, until the next call; null: none, the box is empty.
    void setPopUp(DestinationPopUp* popUp);

    void showPopup() override;
    void hidePopup() override;

Q_SIGNALS:
    /// The user chose the destination with this index in the DestinationPopUp.
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

#pragma once

#include "ui/widgets/ElidedComboBox.h"

/// A pop-up of audio tracks. An item's text is the track's entry ("#1: eng (ac3)"); its description in words
/// ("English, Director's commentary") is drawn beside it, below it in the list. Main thread only.
class AudioComboBox : public ElidedComboBox {
    Q_OBJECT

public:
    explicit AudioComboBox(QWidget* parent = nullptr);

    /// As many descriptions as texts. Selects nothing if they are others than before.
    void setTracks(const QStringList& texts, const QStringList& descriptions);

    void showPopup() override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void showDescription();

    QStringList m_texts;
    QStringList m_descriptions;
};

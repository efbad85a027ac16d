#pragma once

#include <QFont>
#include <QPalette>

class QTextDocument;
struct JobDetails;

/// How a document looks. A value.
struct DetailsLook {
    QPalette palette;
    QFont font;
    Qt::LayoutDirection direction = Qt::LeftToRight;
};

/// Writes the details into an empty document: messages, a table of the tracks, the files, and what is
/// verbatim in a fixed font. Main thread only.
void writeDetails(QTextDocument& document, const JobDetails& details, const DetailsLook& look);

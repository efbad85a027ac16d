#include "ui/window/DetailsDocument.h"

#include "app/queue/JobDetails.h"
#include "ui/look/Colors.h"

#include <QCoreApplication>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>

#include <algorithm>
#include <cmath>

namespace {

using colors::Tone;

constexpr int kMargin = 16;
constexpr int kFrame = 2;  ///< Around the text in the pane.
constexpr int kGap = 8;
constexpr int kLineGap = 4;

Tone toneOf(DetailMessage::Kind kind) {
    switch (kind) {
        case DetailMessage::Kind::Good:
            return Tone::Good;
        case DetailMessage::Kind::Warning:
            return Tone::Warning;
        case DetailMessage::Kind::Problem:
            return Tone::Problem;
        case DetailMessage::Kind::Plain:
            break;
    }
    return Tone::Normal;
}

/// A piece of text in a colour.
struct Piece {
    QString text;
    Tone tone = Tone::Normal;
};
using Cell = QList<Piece>;

class Writer {
    Q_DECLARE_TR_FUNCTIONS(DetailsPane)

public:
    Writer(QTextDocument& document, const DetailsLook& look) : m_cursor(&document), m_look(look) {}

    void write(const JobDetails& details) {
        measure(details);
        for (const DetailMessage& message : details.messages)
            paragraph(Cell{Piece{message.text, toneOf(message.kind)}});
        if (!details.tracks.isEmpty()) writeTracks(details.tracks);
        writeFiles(details.files);
        writeVerbatim(tr("Command line"), details.commandLine);
        writeVerbatim(tr("What the tool printed"), details.said);
    }

private:
    /// The labels of all tables are in one column.
    void measure(const JobDetails& details) {
        const QFontMetricsF metrics(m_look.font);
        double widest = metrics.horizontalAdvance(tr("Track"));
        for (const DetailTrack& track : details.tracks)
            widest = std::max(widest, metrics.horizontalAdvance(track.kind));
        for (const DetailFile& file : details.files)
            widest = std::max(widest, metrics.horizontalAdvance(file.role));
        m_labelWidth = std::ceil(widest) + kMargin + 1;
    }

    static Cell label(const QString& text) { return Cell{Piece{text, Tone::Secondary}}; }

    QTextCharFormat inTone(Tone tone) const {
        QTextCharFormat format;
        format.setForeground(colors::text(m_look.palette, tone));
        return format;
    }

    /// The document's first block and the one behind a table are empty.
    void beginBlock(int topMargin, const QTextCharFormat& format) {
        QTextBlockFormat block;
        block.setTopMargin(m_isFirst ? 0 : topMargin);
        if (m_cursor.block().text().isEmpty()) {
            m_cursor.setBlockFormat(block);
            m_cursor.setBlockCharFormat(format);
        } else {
            m_cursor.insertBlock(block, format);
        }
        m_isFirst = false;
    }

    void insert(const Cell& cell) {
        for (const Piece& piece : cell)
            m_cursor.insertText(piece.text, inTone(piece.tone));
    }

    void paragraph(const Cell& cell) {
        beginBlock(kGap, {});
        insert(cell);
    }

    void heading(const QString& title) {
        QTextCharFormat format = inTone(Tone::Normal);
        format.setFontWeight(QFont::DemiBold);
        beginBlock(kMargin, format);
        m_cursor.insertText(title, format);
    }

    void underline(QTextTableCellFormat& format) const {
        format.setBottomPadding(kLineGap);
        format.setBottomBorder(1);
        format.setBottomBorderStyle(QTextFrameFormat::BorderStyle_Solid);
        format.setBottomBorderBrush(colors::hairline(m_look.palette));
    }

    enum class FirstRow { IsHeader, IsLikeOthers };
    void table(const QList<QList<Cell>>& rows, const QList<QTextLength>& otherWidths, FirstRow firstRow) {
        QTextTableFormat format;
        format.setBorder(0);
        format.setCellPadding(0);
        format.setCellSpacing(0);
        // The document ignores the upper margin of what follows a table.
        format.setBottomMargin(kMargin);
        format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
        format.setLayoutDirection(m_look.direction);
        format.setColumnWidthConstraints(QList{QTextLength(QTextLength::FixedLength, m_labelWidth)} +
                                         otherWidths);
        const auto rowCount = static_cast<int>(rows.size());
        const auto columnCount = static_cast<int>(otherWidths.size() + 1);
        QTextTable* made = m_cursor.insertTable(rowCount, columnCount, format);
        for (int row = 0; row < rowCount; ++row) {
            for (int column = 0; column < columnCount; ++column) {
                QTextTableCell cell = made->cellAt(row, column);
                QTextTableCellFormat cellFormat;
                cellFormat.setTopPadding(kLineGap);
                const bool isLast = column == columnCount - 1;
                const bool isLeftToRight = m_look.direction == Qt::LeftToRight;
                if (!isLast)
                    isLeftToRight ? cellFormat.setRightPadding(kMargin) : cellFormat.setLeftPadding(kMargin);
                if (row == 0 && firstRow == FirstRow::IsHeader) underline(cellFormat);
                cell.setFormat(cellFormat);
                m_cursor = cell.firstCursorPosition();
                insert(rows[row][column]);
            }
        }
        m_cursor.movePosition(QTextCursor::End);
        m_isFirst = false;
    }

    void writeTracks(const QList<DetailTrack>& tracks) {
        heading(tr("Tracks"));
        QList<QList<Cell>> rows;
        rows.append(QList<Cell>{label(tr("Track")), label(tr("In the movie")), label(tr("In the new file"))});
        for (const DetailTrack& track : tracks) {
            const Tone tone = track.isLeftOut ? Tone::Secondary : Tone::Normal;
            Cell outcome{Piece{track.outcome, tone}};
            if (!track.remark.isEmpty())
                outcome.append({QStringLiteral(" · ") + track.remark,
                                track.isIncomplete ? Tone::Warning : Tone::Secondary});
            rows.append(QList<Cell>{label(track.kind), Cell{Piece{track.source, tone}}, outcome});
        }
        constexpr double kShareOfSources = 40;  // percent
        table(rows, {QTextLength(QTextLength::PercentageLength, kShareOfSources), QTextLength()},
              FirstRow::IsHeader);
    }

    void writeFiles(const QList<DetailFile>& files) {
        heading(tr("Files"));
        QList<QList<Cell>> rows;
        for (const DetailFile& file : files) {
            Cell path{Piece{file.path}};
            if (!file.size.isEmpty()) path.append({QStringLiteral(" · ") + file.size, Tone::Secondary});
            rows.append(QList<Cell>{label(file.role), path});
        }
        table(rows, {QTextLength()}, FirstRow::IsLikeOthers);
    }

    void writeVerbatim(const QString& title, const QString& text) {
        if (text.isEmpty()) return;
        heading(title);
        QTextCharFormat format = inTone(Tone::Normal);
        QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        if (m_look.font.pointSizeF() > 0) fixed.setPointSizeF(m_look.font.pointSizeF());
        format.setFont(fixed);
        beginBlock(kGap, format);
        // Its lines are lines of one block, not paragraphs.
        m_cursor.insertText(QString(text).replace(u'\n', QChar::LineSeparator), format);
    }

    QTextCursor m_cursor;
    const DetailsLook& m_look;
    double m_labelWidth = 0;
    bool m_isFirst = true;
};

}  // namespace

void writeDetails(QTextDocument& document, const JobDetails& details, const DetailsLook& look) {
    document.setDefaultFont(look.font);
    document.setDocumentMargin(kMargin - kFrame);
    QTextOption option = document.defaultTextOption();
    option.setTextDirection(look.direction);
    document.setDefaultTextOption(option);
    Writer(document, look).write(details);
}

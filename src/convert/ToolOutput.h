#pragma once

#include <QByteArray>
#include <QString>
#include <QStringDecoder>

/// Collects what the tool says, for the explanation of a failure: without its periodic statistics, and
/// without line breaks, since it is only searched for words. Bounded: of a flood, the beginning, the end and
/// every line that explains something are kept.
class ToolOutput {
public:
    /// Bytes as they come; a line may arrive in pieces.
    void append(const QByteArray& bytes);
    /// The output has ended: what is left is a line.
    void finish();
    /// A text that is not the tool's, such as a reason word.
    void note(const QString& text);

    QString text() const { return m_begin + m_telling + m_end; }
    bool contains(QStringView mark) const;

private:
    void takeLine(QStringView line);
    void keep(QStringView line);

    // The tool writes ASCII, of which UTF-8 is a superset: names of files stay readable.
    QStringDecoder m_decoder{QStringDecoder::Utf8};
    QString m_unfinished;
    QString m_begin;
    QString m_telling;  ///< Lines between the beginning and the end that explain something.
    QString m_end;
};

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringDecoder>

/// Collects the output of the tool for the explanation of a failure: without its periodic statistics and
/// without line breaks, since it is only searched for words. The size is limited: of a long output the
/// beginning, the end and every line that explain() searches for are kept. One thread at a time.
class ToolOutput {
public:
    /// Bytes as they are received; a line may arrive in several parts.
    void append(const QByteArray& bytes);
    /// The output has ended: an unterminated rest is the last line.
    void finish();
    /// Appends a text that does not come from the tool, such as a reason.
    void note(const QString& text);

    QString text() const { return m_begin + m_relevant + m_end; }

private:
    void addLine(QStringView line);
    void keep(QStringView line);

    // The tool writes ASCII, of which UTF-8 is a superset: file names stay readable.
    QStringDecoder m_decoder{QStringDecoder::Utf8};
    QString m_unfinished;
    QString m_begin;
    QString m_relevant;  ///< Lines between the beginning and the end that explain() searches for.
    QString m_end;
};

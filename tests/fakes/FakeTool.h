#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// A scripted replacement of the bundled tool: an `ffmpeg` shell script in a separate resource folder. It can
/// hang, print very much, return a wrong exit status, and die by a signal. A movie's picture are the pixels
/// in the file of its name with ".rgb"; without it there is none.
class FakeTool {
public:
    /// Creates the script below `folder` and makes the application use it.
    explicit FakeTool(const QString& folder);

    /// What a probe prints, on standard error like the real tool.
    void setReport(const QByteArray& report) const { write("report", report); }
    /// The shell commands of a probe, as an alternative; $folder is the folder of runningMark(), $2 the
    /// movie. `wait_until "condition"` waits without a child process.
    void setProbe(const QByteArray& script) const { write("probe", script); }
    /// What a trial run prints.
    void setTrial(const QByteArray& output) const { write("trial", output); }
    /// The shell commands of a conversion. $destination and $progress hold the paths; for
    /// `wait_until` see above. The default writes an output.
    void setConversion(const QByteArray& script) const { write("convert", script); }
    /// A file that exists as soon as a conversion runs.
    QString runningMark() const { return m_folder + "/running"; }
    /// The shell of the last conversion; 0: none has run.
    qint64 process() const;
    /// The arguments of the last conversion.
    QStringList lastArguments() const;

    /// A plain report: H.264 video, and the lines of further streams ("    Stream #0:1(eng): Audio: ac3,
    /// ...").
    static QByteArray report(const QByteArray& moreStreams, const QByteArray& duration = "00:00:10.00");

    /// A conversion that runs until the file `path` exists.
    static QByteArray waitFor(const QString& path);

private:
    void write(const QString& name, const QByteArray& contents) const;

    QString m_folder;
};

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// A scripted stand-in for the carried tool: an `ffmpeg` shell script in a resource folder of its own. It can
/// stall, flood, lie about its exit status, and die by a signal.
class FakeTool {
public:
    /// Puts the script below `folder` and names it to the application.
    explicit FakeTool(const QString& folder);

    /// What a probe prints, on standard error as the real one does.
    void setReport(const QByteArray& report) const;
    /// The shell commands of a probe, instead; $folder is where runningMark() is.
    void setProbe(const QByteArray& script) const;
    /// What a trial run prints.
    void setTrial(const QByteArray& output) const;
    /// The shell commands of a conversion. $destination and $progress hold the paths; `wait_until
    /// "condition"` waits without a child process. The default writes an output.
    void setConversion(const QByteArray& script) const;
    /// A file that exists once a conversion runs, with the shell's process identifier in it.
    QString runningMark() const { return m_folder + "/running"; }
    /// The arguments of each conversion so far, one a line.
    QStringList lastArguments() const;

    /// A plain report: H.264 video, and the lines of further streams ("    Stream #0:1(eng): Audio: ac3,
    /// ...").
    static QByteArray report(const QByteArray& moreStreams, const QByteArray& duration = "00:00:10.00");

    /// A conversion that goes on until `goOn` exists.
    static QByteArray waitFor(const QString& goOn);

private:
    void write(const QString& name, const QByteArray& contents) const;

    QString m_folder;
};

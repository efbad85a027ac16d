#include "fakes/FakeTool.h"

#include "settings/Keys.h"
#include "support/store/Defaults.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>

namespace {

// Bash, whose "read" waits without a child process: a child that is stopped between fork and exec blocks its
// shell, which can then be neither continued nor killed. So nothing of a conversion runs in a child.
constexpr const char* kScript = R"sh(#!/bin/bash
folder=${0%/*}
# A loop ends with the status of its last command, and a "read" that waited in vain has failed.
wait_until() { until eval "$1"; do read -rt 0.02 -u 9 || true; done 9<>"$folder/nothing"; }
if [ "$1" = -version ]; then
    echo "ffmpeg version 5.1.9-fake Copyright"
    exit
fi
if [ $# -eq 2 ] && [ "$1" = -i ]; then
    . "$folder/probe"
    exit 1
fi
progress=
previous=
trial=no
for argument in "$@"; do
    [ "$previous" = -progress ] && progress=$argument
    [ "$previous" = -t ] && trial=yes
    [ "$previous" = -i ] && movie=$argument
    previous=$argument
    destination=$argument
done
if [ "$destination" = pipe:1 ]; then
    cat "$movie.rgb"
    exit
fi
if [ $trial = yes ]; then
    echo trial > "$destination"
    cat "$folder/trial" >&2
    exit 0
fi
printf '%s\n' "$@" > "$folder/arguments"
echo $$ > "$folder/running"
. "$folder/convert"
)sh";

}  // namespace

FakeTool::FakeTool(const QString& folder) : m_folder(folder + "/resources") {
    QDir().mkpath(m_folder);
    write("ffmpeg", kScript);
    QFile::setPermissions(m_folder + "/ffmpeg", QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    ::mkfifo(QFile::encodeName(m_folder + "/nothing").constData(), 0600);
    setReport(report("    Stream #0:1(eng): Audio: ac3, 48000 Hz, stereo, fltp, 192 kb/s\n"));
    setProbe("cat \"$folder/report\" >&2");
    setTrial("");
    setConversion("echo movie > \"$destination\"\n");
    qputenv("RAVELIN_RESOURCES", m_folder.toUtf8());
    // The script writes files of its own.
    standardUserDefaults().setOverride(kCageToolKey, qint64{0});
    // It does not know the arguments of a poster.
    standardUserDefaults().setOverride(kShowPostersKey, qint64{0});
}

qint64 FakeTool::process() const {
    QFile file(runningMark());
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toLongLong() : 0;
}

QStringList FakeTool::lastArguments() const {
    QFile file(m_folder + "/arguments");
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
}

QByteArray FakeTool::report(const QByteArray& moreStreams, const QByteArray& duration) {
    const QByteArray start = "Input #0, matroska,webm, from 'movie.mkv':\n  Duration: " + duration;
    return start +
           ", start: 0.000000, bitrate: 4712 kb/s\n"
           "    Stream #0:0: Video: h264 (High), yuv420p(progressive), 1920x1080, 25 fps\n" +
           moreStreams + "At least one output file must be specified\n";
}

QByteArray FakeTool::waitFor(const QString& path) {
    return "echo movie > \"$destination\"\nwait_until \"[ -e '" + path.toUtf8() + "' ]\"\n";
}

void FakeTool::write(const QString& name, const QByteArray& contents) const {
    QFile file(m_folder + u'/' + name);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        qFatal("cannot write the stand-in");
}

#include "cli/ConvertReport.h"
#include "cli/Output.h"
#include "cli/ProgressLines.h"
#include "convert/StatusText.h"
#include "convert/proof/ReceiptText.h"
#include "support/base/Text.h"
#include "support/base/Texts.h"

#include <QDateTime>
#include <QFileInfo>
#include <QMap>
#include <QSet>

namespace {

QString receiptOf(const ConversionJob& job) {
    const auto receipt = job.receipt();
    return receipt ? Texts::tr(". %1").arg(output::about(job.fileInfo().destinationURL.toLocalFile(),
                                                         receipttext::sentence(*receipt)))
                   : QString();
}

QString nameOf(const ConversionJob& job) {
    return output::shown(job.fileInfo().fileName);
}

/// The options of the command that do the same as the actions; empty: there are none.
QString optionsFor(const QList<FailureAction>& actions) {
    static const QMap<FailureAction, const char*> kOptions = {
        {FailureAction::ReadSubtitlesAs, "--set ExternalSubtitleEncoding=NUMBER"},
        {FailureAction::WithoutEmbeddedSubtitles, "--set DisableBuiltinSubtitles=1"},
        {FailureAction::ConvertWhatIsLeft, "--keep-damaged"},
        {FailureAction::ChooseAnotherFolder, "--to FOLDER"}};
    QStringList options;
    for (const FailureAction action : actions) {
        if (kOptions.contains(action)) options.append(kOptions.value(action));
    }
    return options.join(Texts::tr(" or "));
}

/// Output for people: on a terminal, lines that are redrawn in place; in a pipe, one line at the start and
/// one at the end of each movie.
class TextReport : public ConvertReport {
public:
    explicit TextReport(bool quiet) : m_quiet(quiet), m_redraws(!quiet && output::isTerminal()) {}
    ~TextReport() override { m_lines.clear(); }
    TextReport(const TextReport&) = delete;
    TextReport& operator=(const TextReport&) = delete;

    void probed(const QString&, const std::optional<MKVFileInfo>&, std::optional<qsizetype>,
                const json::Messages&) override {}
    void message(const QString&, const ConsolePresenter::Message&) override {}
    void prepareForOutput() override { m_lines.clear(); }
    void queued(const ConversionJob&) override {}

    void started(const ConversionJob& job) override {
        m_running.append(&job);
        if (m_redraws) {
            redraw();
        } else {
            say(Texts::tr("Converting %1").arg(nameOf(job)));
        }
    }

    void progress(const ConversionJob& job) override {
        if (job.stalledSeconds() == 0) {
            m_stalled.remove(&job);
        } else if (!m_stalled.contains(&job)) {
            m_stalled.insert(&job);
            say(Texts::tr("%1: %2").arg(nameOf(job), stallText(job.stalledSeconds())));
        }
        if (m_redraws) redraw();
    }

    void finished(const ConversionJob& job) override {
        forget(job);
        say(Texts::tr("Finished %1 -> %2 (%3)")
                .arg(nameOf(job), output::shown(job.fileInfo().destinationURL.toLocalFile()),
                     text::formattedTimeFromTimeInterval(conversionSeconds(job))) +
            receiptOf(job));
    }

    void skipped(const QString& file, const QString& path, const Receipt&) override {
        say(Texts::tr("Skipped %1: %2 is there and whole")
                .arg(output::shown(QFileInfo(file).fileName()), output::shown(path)));
    }

    void failed(const ConversionJob& job, const failure::Explanation& explanation) override {
        forget(job);
        const QString options = optionsFor(explanation.actions);
        const QString why = output::about(job.fileInfo().fileURL.toLocalFile(), explanation.message);
        sayError(options.isEmpty() ? Texts::tr("Failed %1: %2").arg(nameOf(job), why)
                                   : Texts::tr("Failed %1: %2 [try %3]").arg(nameOf(job), why, options));
    }

    void refused(const QString& file, const QString& message, bool wasShown) override {
        if (!wasShown) {
            sayError(Texts::tr("Refused %1: %2").arg(output::shown(file), output::about(file, message)));
        } else if (!message.contains(QFileInfo(file).fileName())) {
            sayError(
                Texts::tr("Refused %1").arg(output::shown(file)));  // The message does not name the movie.
        }
    }

private:
    void forget(const ConversionJob& job) {
        m_running.removeOne(&job);
        m_stalled.remove(&job);
    }

    void say(const QString& text) {
        m_lines.clear();
        if (!m_quiet) output::line(text);
        if (m_redraws) redraw();
    }

    void sayError(const QString& text) {
        m_lines.clear();
        output::error(text);
        if (m_redraws) redraw();
    }

    void redraw() {
        QList<ProgressLines::Line> lines;
        for (const ConversionJob* job : std::as_const(m_running)) {
            const double elapsed =
                static_cast<double>(job->startDate().msecsTo(QDateTime::currentDateTime())) / 1000;
            lines.append({nameOf(*job), job->progress(),
                          text::formattedTimeFromTimeInterval(remainingSeconds(job->progress(), elapsed))});
        }
        m_lines.draw(lines);
    }

    const bool m_quiet;
    const bool m_redraws;
    QList<const ConversionJob*> m_running;
    QSet<const ConversionJob*> m_stalled;
    ProgressLines m_lines;
};

}  // namespace

std::unique_ptr<ConvertReport> makeTextReport(bool quiet) {
    return std::make_unique<TextReport>(quiet);
}

double conversionSeconds(const ConversionJob& job) {
    return static_cast<double>(job.startDate().msecsTo(job.stopDate())) / 1000;
}

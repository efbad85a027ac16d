#include "watch/completion/CompletionWaiter.h"

#include "media/MatroskaSize.h"

#include <QPointer>

#include <algorithm>

using namespace std::chrono_literals;
using std::chrono::milliseconds;
using WaitsFor = completion::Rule::WaitsFor;

namespace {

/// A slice ends after the file check during which this time passes, to keep the event loop responsive.
constexpr milliseconds kSliceLength = 5ms;

}  // namespace

CompletionWaiter::CompletionWaiter(const Times& times, FileLook::Sources sources, QObject* parent)
    : QObject(parent), m_times(times), m_sources(std::move(sources)) {
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &CompletionWaiter::checkDueFiles);
}

void CompletionWaiter::wait(const QString& path, Known known) {
    auto found = m_entries.find(path);
    const bool isNew = found == m_entries.end();
    if (isNew) {
        found = m_entries.insert(path, {});
        m_waitingChanged = true;
    }
    found->known = known;
    const auto now = Clock::now();
    if (isNew || known != Known::Modified) {
        found->interval = 0ms;
        schedule(path, *found, now);
    } else if (!found->due) {
        // The writer probably continues: do not check after each write.
        schedule(path, *found, now + m_times.still);
    }
    arm();
}

void CompletionWaiter::lookAgain(const QString& path) {
    const auto found = m_entries.find(path);
    if (found == m_entries.end()) return;
    schedule(path, *found, Clock::now());
    arm();
}

void CompletionWaiter::cancel(const QString& path) {
    remove(path);
    arm();
}

void CompletionWaiter::cancelAll() {
    m_waitingChanged = m_waitingChanged || !m_entries.isEmpty();
    m_entries.clear();
    m_schedule.clear();
    arm();
}

void CompletionWaiter::checkDueFiles() {
    const QPointer<CompletionWaiter> alive(this);
    const auto begin = Clock::now();
    while (!m_schedule.empty() && m_schedule.begin()->first <= begin && Clock::now() - begin < kSliceLength) {
        const QString path = m_schedule.begin()->second;
        const Outcome outcome = look(path, m_entries[path]);
        if (outcome == Outcome::Waits) continue;
        // Remove first: a slot may start the wait again, or run a nested event loop with further turns.
        remove(path);
        arm();
        Q_EMIT outcome == Outcome::Complete ? complete(path) : abandoned(path);
        if (!alive) return;
    }
    const bool changed = std::exchange(m_waitingChanged, false);
    arm();
    if (changed) Q_EMIT waitingChanged();
}

CompletionWaiter::Outcome CompletionWaiter::look(const QString& path, Entry& entry) {
    ++m_looks;
    const FileLook found = lookAt(path, m_sources);
    if (found.found == FileLook::Found::NoFile) return Outcome::DroppedOut;
    if (found.found == FileLook::Found::File) {
        if (found.shape != entry.shape) {
            entry.shape = found.shape;
            entry.sameSince = Clock::now();
        }
        const completion::Rule rule = ruleFor(found, entry.known, m_times);
        if (rule.waitsFor == WaitsFor::Stillness) return lookWhenStill(path, entry, found, rule);
        if (rule.waitsFor == WaitsFor::Event) {
            schedule(path, entry, std::nullopt);
            return Outcome::Waits;
        }
    }
    entry.interval = std::clamp(entry.interval * 2, m_times.firstInterval, m_times.longestInterval);
    lookLater(path, entry, entry.interval);
    return Outcome::Waits;
}

CompletionWaiter::Outcome CompletionWaiter::lookWhenStill(const QString& path, Entry& entry,
                                                          const FileLook& found,
                                                          const completion::Rule& rule) {
    const auto now = Clock::now();
    const auto byFile =
        stoodStillFor(found, entry.known, std::chrono::system_clock::now().time_since_epoch());
    const auto stood = std::max<std::chrono::nanoseconds>(now - entry.sameSince, byFile);
    if (stood < rule.still) {
        schedule(path, entry, now + (rule.still - stood));
        return Outcome::Waits;
    }
    if (!rule.declaredSizeCounts) return Outcome::Complete;
    const auto declared = matroska::declaredSize(path).value_or(0);
    if (static_cast<quint64>(found.shape.size) >= declared) return Outcome::Complete;
    lookLater(path, entry, m_times.longestInterval);
    return Outcome::Waits;
}

/// Between half of the interval and all of it, so that the checks of many files coincide in one wake-up.
void CompletionWaiter::lookLater(const QString& path, Entry& entry, milliseconds interval) {
    const auto step = std::max<Clock::duration>(interval / 2, 1ms);
    const auto latest = Clock::now() + std::max(interval, 2ms);
    schedule(path, entry, Clock::time_point(latest.time_since_epoch() / step * step));
}

void CompletionWaiter::schedule(const QString& path, Entry& entry, std::optional<Clock::time_point> due) {
    if (entry.due) m_schedule.erase({*entry.due, path});
    entry.due = due;
    if (due) m_schedule.emplace(*due, path);
}

void CompletionWaiter::remove(const QString& path) {
    const auto found = m_entries.find(path);
    if (found == m_entries.end()) return;
    schedule(path, *found, std::nullopt);
    m_entries.erase(found);
    m_waitingChanged = true;
}

void CompletionWaiter::arm() {
    if (m_waitingChanged)
        m_timer.start(0ms);
    else if (m_schedule.empty())
        m_timer.stop();
    else
        m_timer.start(
            std::max(0ms, std::chrono::ceil<milliseconds>(m_schedule.begin()->first - Clock::now())));
}

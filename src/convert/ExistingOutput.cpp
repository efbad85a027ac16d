#include "convert/ExistingOutput.h"

#include "convert/ClaimedFile.h"
#include "convert/proof/ProofRecord.h"
#include "support/base/FileSteps.h"
#include "support/base/Files.h"
#include "support/base/Volume.h"

#include <QFileInfo>

#include <functional>

namespace existingoutput {

namespace {

using proofrecord::Finding;

/// Calls `isDone` with the names that outputs have, until it returns true or a numbered name is free.
void forEachOutput(const Place& place, const std::function<bool(const QString&)>& isDone) {
    files::uniqueFile(place.destination, [&](const QString& name) {
        const bool isThere = filesteps::isTaken(name);
        if (isThere && isDone(name)) return false;
        if (place.isOnly) return false;
        // The user may have deleted the first one and kept those with a number.
        return isThere || name == place.destination;
    });
}

bool isOfOtherSource(const QString& output, const QString& source) {
    const auto converted = claimedfile::sourceOf(output);
    return converted && converted != FileStamp::of(source);
}

/// For files without a mark: where none can be marked, and on volumes without links for a moment.
bool seemsToBeWritten(const QString& output) {
    constexpr qint64 kLongestPause = 600;  // seconds
    constexpr qint64 kLongestClaim = 60;
    const auto file = FileStamp::of(output);
    if (!file) return false;
    if (file->size == 0 && file->secondsAgo() < kLongestClaim && volume::isShared(QFileInfo(output).path()))
        return true;
    return file->secondsAgo() < kLongestPause && claimedfile::markOf(output) == claimedfile::Mark::NotKnown &&
           proof::isUnfinished(output);
}

/// What the attributes say; `mayBeWhole` is set where they say nothing.
Found lookAt(const QString& output, const QString& source, bool& mayBeWhole) {
    mayBeWhole = false;
    // A movie that gets an output of its own name is not its own output.
    if (QFileInfo(output).canonicalFilePath() == QFileInfo(source).canonicalFilePath()) return {};
    if (claimedfile::isBeingWritten(output))
        return isOfOtherSource(output, source) ? Found() : Found{State::InProgress, output, {}};
    if (claimedfile::markOf(output) == claimedfile::Mark::Set) return {};
    const proofrecord::Found record = proofrecord::read(output, source);
    if (record.finding == Finding::Whole) return {State::Whole, output, record.receipt};
    mayBeWhole = record.finding == Finding::None || record.finding == Finding::SourceTouched;
    return {};
}

/// A whole output counts more than one that is written beside it.
void take(Found& result, Found found) {
    if (result.state == State::None || found.state == State::Whole) result = std::move(found);
}

}  // namespace

bool isOutput(const QString& path) {
    return claimedfile::markOf(path) == claimedfile::Mark::Set ||
           filesteps::attribute(path, proofrecord::kName);
}

Found look(const QString& source, const Place& place) {
    Found result;
    forEachOutput(place, [&](const QString& output) {
        bool mayBeWhole = false;
        take(result, lookAt(output, source, mayBeWhole));
        return result.state == State::Whole;
    });
    return result;
}

Found find(const proof::Existing& existing, const Place& place, const std::stop_token& stop) {
    Found result;
    const auto compared = FileStamp::of(existing.source);
    forEachOutput(place, [&](const QString& output) {
        bool mayBeWhole = false;
        Found found = lookAt(output, existing.source, mayBeWhole);
        if (mayBeWhole && seemsToBeWritten(output)) {
            found = {State::InProgress, output, {}};
        } else if (mayBeWhole && compared) {
            proof::Existing one = existing;
            one.output = output;
            if (const auto receipt = proof::ofExisting(one, stop)) {
                if (FileStamp::of(existing.source) == compared)
                    proofrecord::write(output, *compared, *receipt);
                found = {State::Whole, output, *receipt};
            }
        }
        take(result, std::move(found));
        return result.state == State::Whole || stop.stop_requested();
    });
    return result;
}

}  // namespace existingoutput

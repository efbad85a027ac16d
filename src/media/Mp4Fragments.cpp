#include "media/Mp4Scan.h"

#include <algorithm>
#include <bit>

namespace media {

using mp4::Box;
using mp4::Boxes;
using mp4::fourCc;
using mp4::Sample;

namespace {

constexpr quint32 kNotKey = 0x10000;  // sample_is_non_sync_sample

}  // namespace

void Mp4Scan::readFragment(const Box& fragment) {
    Boxes boxes(m_bytes, fragment);
    quint64 dataEnd = fragment.position;
    while (const std::optional<Box> box = boxes.next()) {
        if (boxes.isDamaged() || m_file.isCancelled()) break;
        if (box->type == fourCc("traf")) readTrackFragment(*box, fragment.position, dataEnd);
    }
    if (boxes.isDamaged()) damaged(Fault::BadElement, fragment.position, m_end, m_end);
}

/// `dataEnd`: where the samples of the fragment's previous track end.
void Mp4Scan::readTrackFragment(const Box& box, quint64 fragment, quint64& dataEnd) {
    std::size_t index = m_states.size();
    Mp4FragmentDefaults defaults;
    quint64 base = fragment;
    Boxes boxes(m_bytes, box);
    while (const std::optional<Box> part = boxes.next()) {
        if (boxes.isDamaged() || m_file.isCancelled()) break;
        if (part->type == fourCc("tfhd")) {
            const quint64 flags = number(part->data, 4, *part) & 0xFFFFFFU;
            const quint64 id = number(part->data + 4, 4, *part);
            for (index = 0; index < m_states.size() && track(index).number != id;)
                ++index;
            if (index == m_states.size()) {
                damaged(Fault::UnknownTrack, part->position, m_end, m_end);
                return;
            }
            defaults = m_states[index].defaults;
            quint64 at = part->data + 8;
            const auto field = [&](quint64 flag, std::size_t length, auto& value) {
                if ((flags & flag) == 0) return;
                value = static_cast<std::remove_reference_t<decltype(value)>>(number(at, length, *part));
                at += length;
            };
            const bool isBasedOnFragment = (flags & 0x20000U) != 0;
            base = isBasedOnFragment ? fragment : dataEnd;
            field(0x1, 8, base);
            field(0x2, 4, defaults.description);
            field(0x8, 4, defaults.duration);
            field(0x10, 4, defaults.size);
            field(0x20, 4, defaults.flags);
            dataEnd = base;
        }
        if (index == m_states.size()) continue;
        if (part->type == fourCc("tfdt"))
            m_states[index].nextTime =
                number(part->data + 4, number(part->data, 1, *part) == 1 ? 8 : 4, *part);
        if (part->type == fourCc("trun")) readRun(*part, index, defaults, base, dataEnd);
    }
    if (boxes.isDamaged()) damaged(Fault::BadElement, box.position, m_end, m_end);
}

/// `offset`: where the next run's samples are unless it says so.
void Mp4Scan::readRun(const Box& box, std::size_t index, const Mp4FragmentDefaults& defaults, quint64 base,
                      quint64& offset) {
    Mp4Track& state = m_states[index];
    Track& its = track(index);
    const quint64 flags = number(box.data, 4, box) & 0xFFFFFFU;
    quint64 samples = number(box.data + 4, 4, box);
    quint64 at = box.data + 8;
    if ((flags & 0x1U) != 0) {
        offset = base + static_cast<quint64>(qint64{static_cast<qint32>(number(at, 4, box))});
        at += 4;
    }
    offset = std::min(offset, kFarthest);
    std::optional<quint32> firstFlags;
    if ((flags & 0x4U) != 0) {
        firstFlags = static_cast<quint32>(number(at, 4, box));
        at += 4;
    }
    const auto fields = static_cast<quint64>(std::popcount(flags & 0xF00U));
    const quint64 room = at > box.end ? 0 : box.end - at;
    if (fields > 0 && samples > room / (4 * fields)) {
        damaged(Fault::BadTable, box.position, m_end, m_end);
        samples = room / (4 * fields);
    }
    // Nothing in the file bounds their number otherwise.
    if (fields == 0 && defaults.size == 0 && samples > 0)
        return damaged(Fault::BadTable, box.position, m_end, m_end);
    for (quint64 i = 0; i < samples && !state.isBeyondFile && !m_file.isCancelled(); ++i) {
        const auto field = [&](quint64 flag, quint32 otherwise) {
            if ((flags & flag) == 0) return otherwise;
            at += 4;
            return static_cast<quint32>(m_bytes.number(at - 4, 4));
        };
        Sample sample;
        sample.offset = offset;
        sample.decodeTime = static_cast<qint64>(state.nextTime);
        sample.duration = field(0x100, defaults.duration);
        sample.size = field(0x200, defaults.size);
        const quint32 sampleFlags = field(0x400, i == 0 && firstFlags ? *firstFlags : defaults.flags);
        sample.isKey = (sampleFlags & kNotKey) == 0;
        sample.composition = static_cast<qint32>(field(0x800, 0));
        state.nextTime += sample.duration;
        offset += sample.size;
        addSample(its, state, sample, defaults.description <= 1);
    }
}

}  // namespace media

#include "convert/SpaceCheck.h"

#include "support/base/Texts.h"

namespace spacecheck {

Verdict check(quint64 movieSize, std::optional<quint64> freeBytes, std::optional<quint64> maximumFileSize) {
    if (freeBytes && *freeBytes < movieSize) return Verdict::TooLittleSpace;
    if (maximumFileSize && *maximumFileSize < movieSize) return Verdict::NoLargeFiles;
    return Verdict::Enough;
}

QString message(Verdict verdict) {
    switch (verdict) {
        case Verdict::Enough:
            return {};
        case Verdict::TooLittleSpace:
            return Texts::tr("There is not enough free space on your target disk for conversion.");
        case Verdict::NoLargeFiles:
            return Texts::tr("Your target disk doesn't support large files.");
    }
    return {};
}

}  // namespace spacecheck

#pragma once

#include "probe/Verdicts.h"

#include <QString>

#include <vector>

/// Messages about movies that are added together. They are shown as one list instead of one alert each. Main
/// thread only.
class GatheredVerdicts {
public:
    void add(const QString& fileName, const Verdict& verdict);

    /// Shows in turn with other alerts what is due according to the current settings, and forgets everything.
    /// Equal messages about several movies are one item of the list. The list's box suppresses all of its
    /// warnings; a single message is shown as it is.
    void show();

private:
    struct Item {
        QString fileName;
        Verdict verdict;
    };

    std::vector<Item> m_items;
};

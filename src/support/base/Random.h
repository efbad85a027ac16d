#pragma once

#include <QRandomGenerator>

#include <algorithm>

// Random numbers between two limits, given in either order. Callable from any thread.

/// Includes both limits.
inline int generateRandomIntBetween(int a, int b) {
    const auto [least, greatest] = std::minmax(qint64{a}, qint64{b});
    return static_cast<int>(QRandomGenerator::global()->bounded(least, greatest + 1));
}

inline float generateRandomFloatBetween(float a, float b) {
    return a + static_cast<float>(QRandomGenerator::global()->generateDouble()) * (b - a);
}

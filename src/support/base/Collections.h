#pragma once

#include <QList>

#include <algorithm>
#include <iterator>

/// Algorithms on collections. Callable from any thread.
namespace collections {

/// The elements for which `keep` returns true, in order.
template <typename T, typename Predicate>
QList<T> filtered(const QList<T>& list, Predicate keep) {
    QList<T> result;
    std::copy_if(list.cbegin(), list.cend(), std::back_inserter(result), keep);
    return result;
}

/// The sum of `number` (a 32-bit integer) over the elements; 0 for an empty list.
template <typename List, typename Function>
qint64 reduce(const List& list, Function number) {
    qint64 sum = 0;
    for (const auto& element : list)
        sum += number(element);
    return sum;
}

/// Whether `value` exists and is a non-empty collection; controls are enabled by this.
template <typename T>
bool isNonEmptyCollection(const T& value) {
    if constexpr (requires { value.has_value(); }) {
        return value && isNonEmptyCollection(*value);
    } else if constexpr (requires { value.count(); }) {
        return value.count() > 0;
    } else {
        return false;
    }
}

/// Removes duplicates; keeps the first of equal elements.
template <typename List>
List withoutDuplicates(const List& list) {
    List result;
    for (const auto& element : list) {
        if (!result.contains(element)) result.append(element);
    }
    return result;
}

}  // namespace collections

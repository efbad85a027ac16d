#pragma once

#include <QTest>

#include <initializer_list>
#include <tuple>

namespace table {

inline constexpr const char* kColumns[] = {"0", "1", "2", "3", "4", "5", "6", "7"};

}  // namespace table

/// Adds the rows of a data table, each with its name first; for functions whose names end in _data.
template <typename... Columns>
void addRows(std::initializer_list<std::tuple<QByteArray, Columns...>> rows) {
    const char* const* column = table::kColumns;
    (QTest::addColumn<Columns>(*column++), ...);
    for (const auto& whole : rows) {
        const auto add = [](const QByteArray& name, const Columns&... values) {
            (QTest::newRow(name.constData()) << ... << values);
        };
        std::apply(add, whole);
    }
}

/// The values of the current row, for a structured binding.
template <typename... Columns>
std::tuple<Columns...> row() {
    const char* const* column = table::kColumns;
    const auto next = [&](int type) { return QTest::qData(*column++, type); };
    return {*static_cast<Columns*>(next(qMetaTypeId<Columns>()))...};
}

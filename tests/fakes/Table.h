#pragma once

#include <QTest>

#include <initializer_list>
#include <tuple>
#include <type_traits>

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

/// The data of a test: its columns, and a call for each row with its name and its values.
///     const Table<int, QString> row("count", "text");
///     row("none", 0, "");
template <typename... Types>
class Table {
public:
    template <typename... Names>
    explicit Table(Names... names) {
        static_assert(sizeof...(Names) == sizeof...(Types));
        (QTest::addColumn<Types>(names), ...);
    }
    void operator()(const char* name, const std::type_identity_t<Types>&... values) const {
        (QTest::newRow(name) << ... << values);
    }
};

/// The values of the row that is tested, of the columns with these names:
///     const auto [count, text] = fetch<int, QString>("count", "text");
template <typename... Types, typename... Names>
std::tuple<Types...> fetch(Names... names) {
    return {*static_cast<const Types*>(QTest::qData(names, qMetaTypeId<Types>()))...};
}

#pragma once

#include <QTest>

#include <tuple>
#include <type_traits>

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

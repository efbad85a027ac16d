#include "settings/SettingsTable.h"

#include "settings/Changes.h"
#include "settings/Keys.h"
#include "settings/Snapshot.h"
#include "support/store/Defaults.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <algorithm>
#include <numeric>

namespace settings {

namespace {

#define SETTING(key, type, standard, meaning) &key,   // NOLINT(bugprone-macro-parentheses)
#define UNLISTED(key, type, standard, meaning) &key,  // NOLINT(bugprone-macro-parentheses)
#define UNREGISTERED(key, type, meaning) &key,        // NOLINT(bugprone-macro-parentheses)
constexpr const Row* kTable[] = {
#include "settings/Settings.def"
};

// Keys are unique, since each is also the name of a constant.
static_assert(std::ranges::all_of(kTable,
                                  [](const Row* row) {
                                      return row->choices.isEmpty() ||
                                             row->choices.contains(row->integerDefault);
                                  }),
              "a default is not among the allowed values");
static_assert(std::ranges::all_of(kTable,
                                  [](const Row* row) {
                                      return !row->choices.otherwise ||
                                             row->choices.contains(*row->choices.otherwise);
                                  }),
              "what other numbers mean is not among the allowed values");

size_t editDistance(const QString& a, const QString& b) {
    std::vector<size_t> row(static_cast<size_t>(b.size()) + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (const QChar letter : a) {
        size_t diagonal = row[0]++;
        for (qsizetype j = 0; j < b.size(); ++j) {
            const auto at = static_cast<size_t>(j) + 1;
            const size_t substituted = diagonal + (letter == b[j] ? 0 : 1);
            diagonal = row[at];
            row[at] = std::min({row[at] + 1, row[at - 1] + 1, substituted});
        }
    }
    return row.back();
}

std::optional<QVariantList> listFromText(const QString& text, bool bytes) {
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (!document.isArray()) return std::nullopt;
    QVariantList list;
    const QJsonArray array = document.array();
    for (const auto& element : array) {
        if (!element.isString()) return std::nullopt;
        list.append(bytes ? QVariant(element.toString().toUtf8()) : QVariant(element.toString()));
    }
    return list;
}

}  // namespace

QVariant Row::defaultValue() const {
    if (!isRegistered()) return {};
    if (type == Type::DataArray || type == Type::StringArray) return QVariantList();
    return static_cast<qint64>(integerDefault);
}

std::span<const Row* const> all() {
    return kTable;
}

const Row* find(const QString& key) {
    const auto* found = std::ranges::find_if(kTable, [&](const Row* row) { return key == row->key; });
    return found == std::end(kTable) ? nullptr : *found;
}

void registerDefaults() {
    QVariantMap defaults;
    for (const Row* row : kTable) {
        if (row->isRegistered()) defaults.insert(row->key, row->defaultValue());
    }
    standardUserDefaults().registerDefaults(defaults);
    standardUserDefaults().setValueHandler([](const QString& key) {
        if (find(key)) Q_EMIT Changes::shared().changed(key);
    });
}

Snapshot Snapshot::current() {
    Snapshot snapshot;
    // Settings that are neither stored nor registered have the default of an empty snapshot.
    snapshot.m_values = standardUserDefaults().objects();
    return snapshot;
}

std::optional<QVariant> valueFromText(Type type, const QString& text) {
    using enum Type;
    switch (type) {
        case Integer:
        case Boolean: {
            static const QRegularExpression wholeNumber(QStringLiteral("^[+-]?[0-9]+$"));
            bool fits = false;
            const qint64 number = text.toLongLong(&fits);
            if (!fits || !wholeNumber.match(text).hasMatch()) return std::nullopt;
            return number;
        }
        case Data:
            return text.toUtf8();
        case DataArray:
        case StringArray: {
            auto list = listFromText(text, type == DataArray);
            if (!list) return std::nullopt;
            return QVariant(*list);
        }
    }
    return std::nullopt;
}

QString textFromValue(const QVariant& value) {
    if (value.typeId() != QMetaType::QVariantList) return value.toString();
    QJsonArray array;
    const QVariantList list = value.toList();
    for (const QVariant& element : list)
        array.append(element.toString());
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

QStringList nearestKeys(const QString& key) {
    constexpr size_t kMaximum = 3;
    std::vector<std::pair<size_t, QString>> ranked;
    for (const Row* row : kTable) {
        const QString candidate(row->key);
        ranked.emplace_back(editDistance(key.toLower(), candidate.toLower()), candidate);
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    QStringList nearest;
    for (size_t i = 0; i < kMaximum; ++i)
        nearest.append(ranked[i].second);
    return nearest;
}

}  // namespace settings

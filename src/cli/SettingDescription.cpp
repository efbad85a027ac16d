#include "cli/SettingDescription.h"

#include <QJsonArray>
#include <QJsonObject>

namespace settingdescription {

namespace {

bool isNumber(settings::Type type) {
    return type == settings::Type::Integer || type == settings::Type::Boolean;
}

}  // namespace

QString typeWord(settings::Type type) {
    switch (type) {
        case settings::Type::Integer:
            return "integer";
        case settings::Type::Boolean:
            return "boolean";
        case settings::Type::Data:
            return "text";
        case settings::Type::DataArray:
        case settings::Type::StringArray:
            return "texts";
    }
    return {};
}

QString allowedText(const settings::Row& setting) {
    if (!isNumber(setting.type))
        return setting.type == settings::Type::Data ? "a text" : "a JSON array of texts";
    if (setting.choices.isEmpty())
        return setting.type == settings::Type::Boolean ? "0 or 1" : "a whole number";
    QStringList values;
    for (const settings::Choice& choice : setting.choices.list) {
        const QString number = QString::number(choice.number);
        values.append(choice.word.isEmpty() ? number : number + " = " + choice.word);
    }
    return "one of " + values.join(", ");
}

QJsonValue allowedValues(const settings::Row& setting) {
    QJsonArray values;
    for (const settings::Choice& choice : setting.choices.list)
        values.append(QJsonObject{{"value", choice.number}, {"word", QString(choice.word)}});
    if (values.isEmpty() && setting.type == settings::Type::Boolean)
        values = {QJsonObject{{"value", 0}, {"word", "no"}}, QJsonObject{{"value", 1}, {"word", "yes"}}};
    return values.isEmpty() ? QJsonValue() : values;
}

QVariant unsetValue(const settings::Row& setting) {
    return setting.isRegistered() || !isNumber(setting.type) ? setting.defaultValue() : QVariant(qint64{0});
}

}  // namespace settingdescription

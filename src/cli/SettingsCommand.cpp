#include "cli/Commands.h"
#include "cli/ExitStatus.h"
#include "cli/Output.h"
#include "cli/SettingDescription.h"
#include "convert/RunJournal.h"
#include "settings/SettingsTable.h"
#include "support/base/Format.h"
#include "support/base/Texts.h"
#include "support/store/Defaults.h"

#include <QJsonArray>
#include <QJsonObject>

namespace {

struct Present {
    QString key;
    QVariant value;
    bool isDefault = true;
};

Present present(const settings::Row& setting) {
    const QVariant unset = settingdescription::unsetValue(setting);
    const QVariant stored = defaultObject(setting.key);
    const bool isNumber = unset.typeId() == QMetaType::LongLong;
    const QVariant value = !stored.isValid() ? unset : isNumber ? QVariant(defaultInt(setting.key)) : stored;
    return {setting.key, value, value == unset};
}

QJsonValue jsonValue(const QVariant& value) {
    if (value.typeId() == QMetaType::QByteArray) return QString::fromUtf8(value.toByteArray());
    if (value.typeId() != QMetaType::QVariantList) return QJsonValue::fromVariant(value);
    QJsonArray array;
    const QVariantList list = value.toList();
    for (const QVariant& element : list)
        array.append(jsonValue(element));
    return array;
}

QJsonObject jsonObject(const Present& setting) {
    return {{"key", setting.key}, {"value", jsonValue(setting.value)}, {"isDefault", setting.isDefault}};
}

QString textOf(const Present& setting) {
    return makeString("%@ = %@%@", setting.key, settings::textFromValue(setting.value),
                      setting.isDefault ? "  " + Texts::tr("(default)") : QString());
}

void get(const Present& setting, bool asJson) {
    if (asJson) {
        output::json(jsonObject(setting));
    } else {
        output::line(settings::textFromValue(setting.value));
    }
}

void list(bool asJson) {
    for (const settings::Row* setting : settings::all()) {
        if (setting->registration != settings::Registration::Listed) continue;
        if (asJson) {
            output::json(jsonObject(present(*setting)));
        } else {
            output::line(textOf(present(*setting)));
        }
    }
}

/// Also lists the settings that list() leaves out.
void describeAll(bool asJson) {
    for (const settings::Row* setting : settings::all()) {
        const QVariant unset = settingdescription::unsetValue(*setting);
        if (asJson) {
            QJsonObject object = jsonObject(present(*setting));
            object["meaning"] = setting->meaning;
            object["type"] = settingdescription::typeWord(setting->type);
            object["allowed"] = settingdescription::allowedValues(*setting);
            object["default"] = jsonValue(unset);
            output::json(object);
            continue;
        }
        output::line(textOf(present(*setting)));
        output::line(makeString("    %@.", QString(setting->meaning)));
        const QString standard = settings::textFromValue(unset);
        output::line(makeString("    Value: %@; default: %@.", settingdescription::allowedText(*setting),
                                standard.isEmpty() ? QString("empty") : standard));
    }
}

QString typeName(settings::Type type) {
    switch (type) {
        case settings::Type::Integer:
        case settings::Type::Boolean:
            return Texts::tr("a whole number");
        case settings::Type::Data:
            return Texts::tr("text");
        case settings::Type::DataArray:
        case settings::Type::StringArray:
            return Texts::tr("a JSON array of texts");
    }
    return {};
}

int change(const QString& key, const QVariant& value) {
    const QString reported = standardUserDefaults().problem();
    setDefaultObject(key, value);
    if (standardUserDefaults().synchronise()) return exitstatus::kSuccess;
    if (const QString problem = standardUserDefaults().problem(); problem != reported) output::error(problem);
    return exitstatus::kFailure;
}

int set(const settings::Row& setting, const QString& text) {
    const auto value = settings::valueFromText(setting.type, text);
    if (!value) {
        return wrongUsage(Texts::tr("'%1' is not %2, which the setting %3 needs")
                              .arg(text, typeName(setting.type), QString(setting.key)),
                          "settings");
    }
    return change(setting.key, *value);
}

}  // namespace

int runSettings(const SettingsOptions& options) {
    using enum SettingsOptions::Action;
    settings::registerDefaults();
    RunJournal::cleanUpAfterCrashes();
    if (const QString problem = standardUserDefaults().problem(); !problem.isEmpty()) output::error(problem);

    if (options.action == List) {
        if (options.describe) {
            describeAll(options.json);
        } else {
            list(options.json);
        }
        return exitstatus::kSuccess;
    }
    if (options.action == Path) {
        const QString path = standardUserDefaults().filePath();
        if (options.json) {
            output::json({{"path", path}});
        } else {
            output::line(path);
        }
        return exitstatus::kSuccess;
    }

    const settings::Row* setting = settings::find(options.key);
    // Keys that are not in the table, such as a suppressed warning, can be read and deleted, too.
    const QVariant stored = standardUserDefaults().storedObject(options.key);
    if (!setting && (options.action == Set || !stored.isValid()))
        return wrongUsage(unknownKeyMessage(options.key), "settings");
    switch (options.action) {
        case Get:
            get(setting ? present(*setting) : Present{options.key, stored, false}, options.json);
            return exitstatus::kSuccess;
        case Set:
            return set(*setting, options.value);
        case Unset:
            return change(options.key, {});
        case List:
        case Path:
            break;
    }
    return exitstatus::kSuccess;
}

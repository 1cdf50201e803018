#include "engine/FailoverSettingsJson.h"

namespace selvane {

std::optional<FailoverSettings> failoverFromJson(const QJsonObject &object,
                                                 FailoverSettings settings, QString *error)
{
    static const QStringList fields{"enabled", "failoverMs", "returnMs",
                                    "backups", "slate",      "slateText"};
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (!fields.contains(it.key())) {
            *error = QStringLiteral("\"%1\" is not a failover field").arg(it.key());
            return std::nullopt;
        }
    }
    const auto wrong = [error](const char *field, const char *what) {
        *error = QStringLiteral("\"%1\" must be %2").arg(QLatin1String(field), QLatin1String(what));
        return std::nullopt;
    };
    if (object.contains("enabled")) {
        if (!object["enabled"].isBool())
            return wrong("enabled", "true or false");
        settings.enabled = object["enabled"].toBool();
    }
    for (const auto &[field, target] : {std::pair{"failoverMs", &settings.failoverMs},
                                        std::pair{"returnMs", &settings.returnMs}}) {
        if (!object.contains(field))
            continue;
        const QJsonValue value = object[field];
        if (!value.isDouble() || value.toDouble() != double(value.toInt()))
            return wrong(field, "a whole number of milliseconds");
        *target = value.toInt();
    }
    if (object.contains("backups")) {
        if (!object["backups"].isObject())
            return wrong("backups", "an object of channel numbers \"1\" to \"4\"");
        const QJsonObject backups = object["backups"].toObject();
        for (auto it = backups.begin(); it != backups.end(); ++it) {
            bool ok = false;
            const int channel = it.key().toInt(&ok);
            if (!ok || channel < 1 || channel > kChannelCount)
                return wrong("backups", "an object of channel numbers \"1\" to \"4\"");
            if (!it.value().isString() && !it.value().isNull())
                return wrong("backups", "addresses, channel:M, or null to clear one");
            settings.backups[std::size_t(channel - 1)] = it.value().toString().trimmed();
        }
    }
    for (const auto &[field, target] :
         {std::pair{"slate", &settings.slatePath}, std::pair{"slateText", &settings.slateText}}) {
        if (!object.contains(field))
            continue;
        if (!object[field].isString())
            return wrong(field, "a string");
        *target = object[field].toString();
    }
    return settings;
}

} // namespace selvane

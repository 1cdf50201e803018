#include "control/FailoverJson.h"

#include "engine/Engine.h"

#include <QJsonArray>

namespace selvane::control {

QJsonObject failoverJson(const Engine &engine)
{
    const FailoverSettings settings = engine.failover();
    const ProgramStats program = engine.stats().program;
    QJsonObject backups;
    for (int c = 0; c < kChannelCount; ++c)
        if (!settings.backups[std::size_t(c)].isEmpty())
            backups.insert(QString::number(c + 1), settings.backups[std::size_t(c)]);
    return {{"enabled", settings.enabled},
            {"failoverMs", settings.failoverMs},
            {"returnMs", settings.returnMs},
            {"backups", backups},
            {"slate", settings.slatePath},
            {"slateText", settings.slateText},
            {"failedChannel",
             program.failedChannel >= 0 ? QJsonValue(program.failedChannel + 1) : QJsonValue()},
            {"standIn", program.standIn},
            {"failovers", program.failovers},
            {"returns", program.returns},
            {"slateOnAir", program.slate}};
}

} // namespace selvane::control

#include "engine/OutputMomentText.h"

namespace selvane {

std::optional<OutputMoment> readOutputMoment(const QString &text, bool stop, const QDateTime &now)
{
    const QString t = text.trimmed();
    if (t.isEmpty() || t == QLatin1String("hand"))
        return OutputMoment{};
    if (t == QLatin1String("schedule"))
        return stop ? OutputMoment{OutputMoment::Kind::ScheduleEnd, 0, {}}
                    : OutputMoment{OutputMoment::Kind::Schedule, 0, {}};
    QString spelled = t;
    spelled.replace(QLatin1Char(' '), QLatin1Char('T'));
    for (const char *format : {"yyyy-MM-ddTHH:mm:ss", "yyyy-MM-ddTHH:mm"}) {
        const QDateTime at = QDateTime::fromString(spelled, QLatin1String(format));
        if (at.isValid())
            return OutputMoment{OutputMoment::Kind::Clock, 0, at};
    }
    for (const char *format : {"HH:mm:ss", "HH:mm", "H:mm"}) {
        const QTime time = QTime::fromString(t, QLatin1String(format));
        if (!time.isValid())
            continue;
        QDateTime at(now.date(), time);
        if (at <= now)
            at = at.addDays(1);
        return OutputMoment{OutputMoment::Kind::Clock, 0, at};
    }
    return std::nullopt;
}

QString outputMomentText(const OutputMoment &moment)
{
    switch (moment.kind) {
    case OutputMoment::Kind::ByHand:
        return QStringLiteral("hand");
    case OutputMoment::Kind::Schedule:
    case OutputMoment::Kind::ScheduleEnd:
        return QStringLiteral("schedule");
    case OutputMoment::Kind::Clock:
        return moment.at.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
    }
    return {};
}

} // namespace selvane

#include "media/TransitionWords.h"

#include <QColor>
#include <QJsonValue>

namespace selvane::transitions {

QStringList kindWords()
{
    return {QStringLiteral("cut"), QStringLiteral("mix"), QStringLiteral("wipe"),
            QStringLiteral("dip")};
}

QStringList directionWords()
{
    return {QStringLiteral("left-to-right"), QStringLiteral("right-to-left"),
            QStringLiteral("top-down"), QStringLiteral("bottom-up")};
}

QString kindWord(TransitionKind kind)
{
    return kindWords().value(int(kind));
}

QString directionWord(WipeDirection direction)
{
    return directionWords().value(int(direction));
}

namespace {

QString durationRange()
{
    return QStringLiteral("from %1 to %2 ms").arg(Transition::kMinMs).arg(Transition::kMaxMs);
}

} // namespace

std::optional<Transition> parse(const QString &text, QString *error)
{
    const QString type = text.section(':', 0, 0).trimmed().toLower();
    const qsizetype kind = kindWords().indexOf(type);
    if (kind < 0) {
        *error = QStringLiteral("a transition is one of %1, with :MS for its length")
                     .arg(kindWords().join(QStringLiteral(", ")));
        return std::nullopt;
    }
    Transition transition;
    transition.kind = TransitionKind(kind);
    if (text.contains(':')) {
        bool ok = false;
        const int ms = text.section(':', 1).trimmed().toInt(&ok);
        if (!ok || ms < Transition::kMinMs || ms > Transition::kMaxMs) {
            *error = QStringLiteral("a transition's length is %1").arg(durationRange());
            return std::nullopt;
        }
        transition.durationMs = ms;
    }
    return transition;
}

std::optional<Transition> fromJson(const QJsonObject &object, const Transition &base,
                                   QString *error)
{
    Transition transition = base;
    const auto word = [&](const char *key, const QStringList &words) -> std::optional<int> {
        const QJsonValue value = object.value(QLatin1String(key));
        const qsizetype index = words.indexOf(value.toString().trimmed().toLower());
        if (!value.isString() || index < 0) {
            *error = QStringLiteral("\"%1\" must be one of: %2")
                         .arg(QLatin1String(key), words.join(QStringLiteral(", ")));
            return std::nullopt;
        }
        return int(index);
    };
    if (object.contains(QLatin1String("type"))) {
        const auto kind = word("type", kindWords());
        if (!kind)
            return std::nullopt;
        transition.kind = TransitionKind(*kind);
    }
    if (object.contains(QLatin1String("durationMs"))) {
        const QJsonValue value = object.value(QLatin1String("durationMs"));
        const double ms = value.toDouble(-1);
        if (!value.isDouble() || ms != double(qint64(ms)) || ms < Transition::kMinMs ||
            ms > Transition::kMaxMs) {
            *error =
                QStringLiteral("\"durationMs\" must be a whole number %1").arg(durationRange());
            return std::nullopt;
        }
        transition.durationMs = int(ms);
    }
    if (object.contains(QLatin1String("direction"))) {
        const auto direction = word("direction", directionWords());
        if (!direction)
            return std::nullopt;
        transition.direction = WipeDirection(*direction);
    }
    if (object.contains(QLatin1String("colour"))) {
        const QString name = object.value(QLatin1String("colour")).toString();
        const QColor colour = QColor::fromString(name);
        if (!name.startsWith('#') || name.size() != 7 || !colour.isValid()) {
            *error = QStringLiteral("\"colour\" must be \"#rrggbb\"");
            return std::nullopt;
        }
        transition.dipColour = colour.rgb();
    }
    return transition;
}

QJsonObject toJson(const Transition &transition)
{
    return {{"type", kindWord(transition.kind)},
            {"durationMs", transition.durationMs},
            {"direction", directionWord(transition.direction)},
            {"colour", QColor::fromRgb(transition.dipColour).name()}};
}

} // namespace selvane::transitions

#include "media/TransitionWords.h"

#include <QColor>
#include <QJsonValue>

namespace selvane::transitions {

QStringList kindWords()
{
    return {QStringLiteral("cut"), QStringLiteral("mix"), QStringLiteral("wipe"),
            QStringLiteral("dip"), QStringLiteral("stinger")};
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
    if (transition.kind == TransitionKind::Stinger) {
        // "stinger:FILE" or "stinger:FILE@CUTMS"; the file may hold colons itself.
        QString file = text.section(':', 1);
        const qsizetype at = file.lastIndexOf('@');
        bool ok = false;
        const int cut = at > 0 ? file.mid(at + 1).toInt(&ok) : -1;
        if (ok && cut >= 0) {
            transition.cutMs = cut;
            file.truncate(at);
        }
        transition.stingerFile = file.trimmed();
        if (transition.stingerFile.isEmpty()) {
            *error = QStringLiteral("a stinger names its clip: stinger:FILE or stinger:FILE@CUTMS");
            return std::nullopt;
        }
        return transition;
    }
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
    if (object.contains(QLatin1String("file"))) {
        const QJsonValue value = object.value(QLatin1String("file"));
        if (!value.isString()) {
            *error = QStringLiteral("\"file\" must be the stinger clip's path");
            return std::nullopt;
        }
        transition.stingerFile = value.toString();
    }
    if (object.contains(QLatin1String("cutMs"))) {
        const QJsonValue value = object.value(QLatin1String("cutMs"));
        const double ms = value.toDouble(-2);
        if (!value.isDouble() || ms != double(qint64(ms)) || ms < -1 || ms > StingerClip::kMaxMs) {
            *error = QStringLiteral("\"cutMs\" must be a whole number from 0 to %1, or -1 for "
                                    "the clip's middle")
                         .arg(StingerClip::kMaxMs);
            return std::nullopt;
        }
        transition.cutMs = int(ms);
    }
    if (transition.kind == TransitionKind::Stinger && transition.stingerFile.trimmed().isEmpty()) {
        *error = QStringLiteral("a stinger needs \"file\", the clip's path");
        return std::nullopt;
    }
    return transition;
}

QJsonObject toJson(const Transition &transition)
{
    QJsonObject object{{"type", kindWord(transition.kind)},
                       {"durationMs", transition.durationMs},
                       {"direction", directionWord(transition.direction)},
                       {"colour", QColor::fromRgb(transition.dipColour).name()}};
    if (!transition.stingerFile.isEmpty()) {
        object.insert("file", transition.stingerFile);
        object.insert("cutMs", transition.cutMs);
    }
    return object;
}

} // namespace selvane::transitions

#pragma once

// Transitions in words, one way for every face: the command line's "TYPE[:MS]", the JSON of the
// remote control and of the schedule's base clips ({"type": "mix", "durationMs": 500, ...}),
// and the log. Plain functions, any thread.

#include "media/ProgramBus.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <optional>

namespace selvane::transitions {

// "cut", "mix", "wipe", "dip", "stinger"; and the wipe's "left-to-right", "right-to-left", "top-down",
// "bottom-up".
QString kindWord(TransitionKind kind);
QString directionWord(WipeDirection direction);
QStringList kindWords();
QStringList directionWords();

// "mix", "mix:500", "wipe:750", "stinger:FILE", "stinger:FILE@CUTMS"; nullopt with `error` set when it is not one.
std::optional<Transition> parse(const QString &text, QString *error);

// The fields of `object` over `base`: "type", "durationMs", "direction", "colour" ("#rrggbb"),
// and a stinger's "file" and "cutMs" (-1: the clip's middle).
// Fields that are absent keep base's; nullopt with `error` set on the first bad one.
std::optional<Transition> fromJson(const QJsonObject &object, const Transition &base,
                                   QString *error);
QJsonObject toJson(const Transition &transition);

} // namespace selvane::transitions

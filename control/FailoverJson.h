#pragma once

// The failover settings and state as the remote control reads and writes them: what the status
// shows under "failover", and a PUT's fields read over the settings as they stand (fields left
// out keep their values). Plain functions on Engine API values; GUI thread.

#include "engine/EngineTypes.h"

#include <QJsonObject>
#include <optional>

namespace selvane {

class Engine;

namespace control {

QJsonObject failoverJson(const Engine &engine);
// Null with `error` set for a field of the wrong type or a name that is not a field.
std::optional<FailoverSettings> failoverFromJson(const QJsonObject &object,
                                                 FailoverSettings settings, QString *error);

} // namespace control
} // namespace selvane

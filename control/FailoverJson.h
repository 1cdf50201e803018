#pragma once

// The failover settings and state as the remote control shows them under "failover" in the
// status. Plain functions on Engine API values; GUI thread.

#include "engine/EngineTypes.h"
#include "engine/FailoverSettingsJson.h"

#include <QJsonObject>
#include <optional>

namespace selvane {

class Engine;

namespace control {

QJsonObject failoverJson(const Engine &engine);

} // namespace control
} // namespace selvane

#pragma once

// The failover settings as JSON: the fields a remote control's PUT and a schedule file's
// "failover" object carry ("enabled", "failoverMs", "returnMs", "backups" by channel number,
// "slate", "slateText"), read over the settings as they stand (fields left out keep their
// values). Plain functions on values; any thread.

#include "engine/EngineTypes.h"

#include <QJsonObject>
#include <optional>

namespace selvane {

// Null with `error` set for a field of the wrong type or a name that is not a field.
std::optional<FailoverSettings> failoverFromJson(const QJsonObject &object,
                                                 FailoverSettings settings, QString *error);

} // namespace selvane

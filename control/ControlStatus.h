#pragma once

// The JSON the remote control answers and sends: the status (the engine's stats snapshot with the
// overlays, volumes and schedule), the audio levels, and the words it uses for states and
// refusals. Plain functions on Engine API values; GUI thread (they read the engine).

#include "engine/EngineTypes.h"

#include <QJsonObject>
#include <QString>

namespace selvane {

class Engine;

namespace control {

QJsonObject statusJson(const Engine &engine);
// Peak and RMS of the program, the channels and the overlay videos.
QJsonObject levelsJson(const EngineStats &stats);
QJsonObject overlaysJson(const Engine &engine);

QString addressProblemText(AddressProblem problem);
QString outputProblemText(const OutputCheck &check);
QString outputFailureWord(OutputFailure failure);

} // namespace control
} // namespace selvane

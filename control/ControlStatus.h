#pragma once

// The JSON the remote control answers and sends: the status (the engine's stats snapshot with the
// overlays, volumes and schedule), the audio levels, and the words it uses for states and
// refusals. Plain functions on Engine API values; GUI thread (they read the engine).

#include "engine/EngineTypes.h"
#include "engine/Problem.h"

#include <QJsonObject>
#include <QString>

namespace selvane {

class Engine;

namespace control {

QJsonObject statusJson(const Engine &engine);
// Peak and RMS of the program, the channels and the overlay videos.
QJsonObject levelsJson(const EngineStats &stats);
QJsonObject overlaysJson(const Engine &engine);
// The preview bus, the transition, the T-bar and fade to black.
QJsonObject productionJson(const Engine &engine);
// The outputs' start and stop times, and how long until they come.
QJsonObject outputTimesJson(const Engine &engine, const OutputStats &stats);
// What can be captured here, as the source dialog lists it: monitors and windows with the
// address that captures each, cameras and microphones with the name the system knows them by.
QJsonObject sourcesJson();

// The HTTP status of a refusal: 409 for what is refused now (the outputs run, a limit is
// reached, a source would read an output), 404 for what does not exist, 400 for a request
// that cannot be right.
int httpStatusFor(const Problem &problem);

} // namespace control
} // namespace selvane

#pragma once

// The output fields of a start request: what the client gave, read from its JSON and applied
// over the show's own output settings. Plain values and functions, any thread.

#include "control/RequestFields.h"
#include "engine/EngineTypes.h"

#include <QByteArray>
#include <QList>
#include <QSize>
#include <QString>
#include <optional>

namespace selvane::control {

// Optional fields of POST /outputs/start; what is absent comes from the show's own settings.
struct OutputRequest
{
    std::optional<QString> record; // empty: no recording
    std::optional<QString> twin;   // the recording's second copy; empty: none
    std::optional<QList<StreamTarget>> streams;
    std::optional<QSize> size; // an invalid size: the program's own
    std::optional<double> fps;
    std::optional<int> bitrateKbps;
    std::optional<int> encoderMode;
    std::optional<int> qualityPreset;
    std::optional<bool> adaptive; // the default profile's adaptive bitrate
    std::optional<int> adaptiveFloor;
    std::optional<QList<EncodeProfile>> profiles;
    std::optional<QString> recordProfile;
    std::optional<QList<IsoRecording>> iso;
};
OutputSettings applyOutputRequest(const OutputRequest &request, OutputSettings settings);

// The output fields of a start request (recording, targets, encoding, profiles).
void readOutputFields(Fields &f, OutputRequest *out);

} // namespace selvane::control

#pragma once

// What a remote-control command does to the show: one typed command (ControlRequests) carried
// out through the Engine API, and the answer for the client. The engine decides what it refuses
// and says why; this turns that into an HTTP status and its English words. Keeps the overlay
// videos' volumes the API set (the engine keeps the preview and program shares apart).
//
// GUI thread (the engine's). A snapshot is answered by the server with the next program picture.

#include "control/ControlRequests.h"
#include "control/HttpWire.h"

#include <QHash>

namespace selvane {
class Engine;
}

namespace selvane::control {

class ControlDispatch
{
public:
    explicit ControlDispatch(Engine &engine);

    Reply execute(const ControlCommand &command);

private:
    Reply startOutputs(const ControlCommand &command);
    Reply loadSchedule(const QByteArray &json);

    Engine &m_engine;
    struct OverlayVolumes
    {
        float preview = 0.0f;
        float program = 1.0f;
    };
    QHash<int, OverlayVolumes> m_overlayVolumes;
};

} // namespace selvane::control

#pragma once

// The window's side of the outputs' own times: the times as the operator keeps them (settings
// "output/startAt" and "output/stopAt", written as "hand", "schedule" or a date-time; one that
// has passed by the next run is dropped), handed to the engine at start and on every change (a
// refused change is shown and undone), and, once a second, the countdown to the next start or
// stop and times set elsewhere (the command line, the remote control). The engine starts and
// stops the outputs; this only asks and shows.
//
// GUI thread only.

#include "engine/EngineTypes.h"

#include <QObject>

class QWidget;

namespace selvane {

class Engine;
class OutputTimesBox;

class OutputTimesDesk : public QObject
{
    Q_OBJECT

public:
    OutputTimesDesk(Engine &engine, OutputTimesBox *box, QWidget *window);

private:
    void apply(const OutputTimes &times);
    static OutputTimes stored();
    static void store(const OutputTimes &times);

    Engine &m_engine;
    OutputTimesBox *m_box;
    QWidget *m_window;
    bool m_applying = false;
    OutputTimes m_shown; // what the box was last given
};

} // namespace selvane

#pragma once

// The window's side of failover: the settings as the operator keeps them (the "failover/" group:
// "enabled", "failoverMs", "returnMs", "backup1" … "backup4", "slate", "slateText"), handed to
// the engine at start and on every change (a refused change is shown and undone), the backups
// chosen on the channel panels, the Slate button, and what the panels show while a channel is
// stood in for. It decides nothing about media: the engine does.
//
// GUI thread only.

#include "engine/EngineTypes.h"

#include <QObject>
#include <array>

class QMainWindow;

namespace selvane {

class ChannelPanel;
class Engine;
class FailoverBox;
class ProductionPanel;

class FailoverDesk : public QObject
{
    Q_OBJECT

public:
    FailoverDesk(Engine &engine, const std::array<ChannelPanel *, kChannelCount> &channels,
                 FailoverBox *box, ProductionPanel *production, QMainWindow *window);

private:
    void apply(const FailoverSettings &settings);
    void chooseBackup(int channel, bool file);
    void showStandIns();
    static FailoverSettings stored();
    static void store(const FailoverSettings &settings);

    Engine &m_engine;
    std::array<ChannelPanel *, kChannelCount> m_channels;
    FailoverBox *m_box;
    ProductionPanel *m_production;
    QMainWindow *m_window;
};

} // namespace selvane

#pragma once

// The audio mixer at the operator's desk: a strip per channel (what the operator hears of it),
// per overlay video with sound (preview and program level, on-program switch) and for the
// program bus, each with a fader in dB, mute and a peak/RMS meter; and the choice of the speaker
// output. Faders turn into linear volumes and go to the engine; nothing else is decided here.
//
// GUI thread only. showStats() is called about 25 times a second with the engine's snapshot:
// it sets the meters and adds or removes overlay strips when the overlays change.

#include "engine/EngineTypes.h"

#include <QList>
#include <QWidget>

class QComboBox;
class QHBoxLayout;
class QLabel;
class QPushButton;
class QSlider;

namespace selvane {

class Engine;
class LevelMeter;

class AudioMixerPanel : public QWidget
{
    Q_OBJECT

public:
    AudioMixerPanel(Engine *engine, QWidget *parent = nullptr);
    ~AudioMixerPanel() override;

    void showStats(const EngineStats &stats);
    // dB of a fader position (the bottom is silence: -infinity), and back.
    static float faderToLinear(int position);
    static int linearToFader(float linear);

protected:
    void changeEvent(QEvent *event) override;

private:
    struct Strip;
    enum class StripKind
    {
        Channel,
        Overlay,
        Program,
    };
    Strip *makeStrip(StripKind kind, int id);
    void applyFader(Strip &strip);
    void showFaderValue(Strip &strip);
    void retranslateUi();
    void retranslateStrip(Strip &strip);
    void refreshDevices();
    void syncOverlayStrips();

    Engine *m_engine = nullptr;
    QHBoxLayout *m_strips = nullptr;
    QList<Strip *> m_channelStrips;
    QList<Strip *> m_overlayStrips;
    Strip *m_programStrip = nullptr;
    QList<int> m_overlayIds;
    QLabel *m_deviceLabel = nullptr;
    QComboBox *m_device = nullptr;
    QPushButton *m_refreshDevices = nullptr;
    int m_ticks = 0;
};

} // namespace selvane

#pragma once

// The production desk beside the program monitor: the preview monitor (the channel on the
// preview bus, in a green frame), the transition (kind, wipe direction, length, a stinger's clip
// and cut point with whether it is loaded, whether direct takes use it), Take and Cut, the T-bar
// and Fade to Black, which blinks while the program is black. It decides nothing: it shows what the
// engine says (setters) and asks for every change (signals); the window shares Take, Cut and Fade
// to Black with the Program menu's actions.
//
// GUI thread only. Emits transitionChosen, directTakesChosen, tbarMoved, monitorResized.

#include "engine/EngineTypes.h"
#include "media/ProgramBus.h"

#include <QFrame>
#include <QImage>

class QAction;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSlider;
class QSpinBox;
class QTimer;

namespace selvane {

class PreviewMonitor;

class ProductionPanel : public QFrame
{
    Q_OBJECT

public:
    explicit ProductionPanel(QWidget *parent = nullptr);

    // The buttons trigger these actions (the window's, with their keys).
    void useActions(QAction *take, QAction *cut, QAction *fadeToBlack);

    void setPreviewChannel(int channel);
    void setPreviewImage(const QImage &image);
    void setTransition(const Transition &transition);
    // Whether the chosen stinger's clip is loaded (shown under its file).
    void setStingerInfo(const StingerInfo &info);
    void setDirectTakes(bool on);
    void setTBar(double position);
    void setFadedToBlack(bool black);
    // The slate on air by hand (the button shows it).
    void setSlateOnAir(bool onAir);
    // The size pictures for the preview monitor are best made at.
    QSize monitorSize() const;

signals:
    void transitionChosen(selvane::Transition transition);
    void directTakesChosen(bool on);
    void tbarMoved(double position);
    // The operator asks for the slate on air.
    void slateRequested();
    // The preview monitor's picture area changed size (device pixels).
    void monitorResized(QSize size);

protected:
    void changeEvent(QEvent *event) override;

private:
    void retranslateUi();
    void emitTransition();
    void showDirection();
    void chooseStingerFile();

    int m_previewChannel = -1;
    bool m_black = false;
    bool m_slate = false;
    bool m_blinkOn = false;
    PreviewMonitor *m_monitor = nullptr;
    QLabel *m_title = nullptr;
    QLabel *m_kindLabel = nullptr;
    QComboBox *m_kind = nullptr;
    QComboBox *m_direction = nullptr;
    QLabel *m_durationLabel = nullptr;
    QSpinBox *m_duration = nullptr;
    QLabel *m_stingerLabel = nullptr;
    QLineEdit *m_stingerFile = nullptr;
    QPushButton *m_stingerBrowse = nullptr;
    QLabel *m_cutLabel = nullptr;
    QSpinBox *m_stingerCut = nullptr;
    QLabel *m_stingerState = nullptr;
    StingerInfo m_stingerInfo;
    QCheckBox *m_directTakes = nullptr;
    QPushButton *m_take = nullptr;
    QPushButton *m_cut = nullptr;
    QPushButton *m_fade = nullptr;
    QPushButton *m_slateButton = nullptr;
    QSlider *m_tbar = nullptr;
    QLabel *m_tbarLabel = nullptr;
    QTimer *m_blink = nullptr;
};

} // namespace selvane

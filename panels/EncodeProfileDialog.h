#pragma once

// Adds or edits one encode profile: its name, its picture (a width and height, or the program's
// size; a frame rate, or the program's), its bitrate, its preset, whether its bitrate follows a
// congested target down (and how far), and whether it shows the multiview instead of the
// program. It owns its controls and the profile it was opened with. OK runs the engine's own
// profile checks against the other profiles and the program's frame rate, and shows the
// problem instead of closing; names that are bad or already taken are refused there.
//
// GUI thread only; modal. Emits nothing beyond QDialog's accepted/rejected.

#include "output/EncoderSettings.h"

#include <QDialog>
#include <QList>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;

namespace selvane {

class EncodeProfileDialog : public QDialog
{
    Q_OBJECT

public:
    // `others`: the profiles there are besides the one edited; `programFps`: the rate of the
    // program (the Encoding section's), which no profile may exceed.
    EncodeProfileDialog(QWidget *parent, const EncodeProfile &profile,
                        const QList<EncodeProfile> &others, double programFps);
    // The profile as the controls show it (encoder and keyframes as it was opened with).
    EncodeProfile profile() const;

public slots:
    void accept() override;

private:
    EncodeProfile m_original;
    QList<EncodeProfile> m_others;
    double m_programFps = 30;

    QLineEdit *m_name = nullptr;
    QSpinBox *m_width = nullptr;
    QSpinBox *m_height = nullptr;
    QComboBox *m_fps = nullptr;
    QSpinBox *m_bitrate = nullptr;
    QComboBox *m_preset = nullptr;
    QCheckBox *m_adaptive = nullptr;
    QSpinBox *m_floor = nullptr;
    QCheckBox *m_multiview = nullptr;
    QLabel *m_error = nullptr;
};

} // namespace selvane

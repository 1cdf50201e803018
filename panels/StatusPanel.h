#pragma once

// The window's status bar line: one chip per stream target (its state in colour), the program's
// frame rate, the frames dropped by decoders and the encoder, the process's CPU use and the
// output bitrate.
//
// Owns its labels and the CPU sampling (the process's CPU time between two calls). GUI thread
// only; shows what showStats() is given, decides nothing. Emits nothing.

#include "engine/EngineTypes.h"

#include <QList>
#include <QWidget>

class QLabel;

namespace selvane {

class StatusPanel : public QWidget
{
    Q_OBJECT

public:
    explicit StatusPanel(QWidget *parent = nullptr);

    // Once a second or so: the CPU share is measured between two calls.
    void showStats(const EngineStats &stats);

protected:
    void changeEvent(QEvent *event) override;

private:
    void retranslateUi();

    QWidget *m_chips = nullptr;
    QList<QLabel *> m_chipLabels;
    QLabel *m_fps = nullptr;
    QLabel *m_drops = nullptr;
    QLabel *m_cpu = nullptr;
    QLabel *m_bitrate = nullptr;
    qint64 m_lastCpuUs = -1;
    qint64 m_lastCpuAtMs = 0;
    double m_cpuPercent = 0;
};

} // namespace selvane

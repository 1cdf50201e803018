#pragma once

// What the outputs are doing, at a glance: encoder, size and rate, elapsed time, the recording
// (file, size, state with the reason of a failure) and each stream target's status and bitrate.
// Shows OutputStats; decides nothing. GUI thread only.

#include "engine/EngineTypes.h"

#include <QWidget>

class QLabel;

namespace selvane {

class OutputStatusView : public QWidget
{
    Q_OBJECT

public:
    explicit OutputStatusView(QWidget *parent = nullptr);
    void showStats(const OutputStats &stats, QSize programSize, double fps);
    QString text() const;

    // The operator's word for a target status ("online" ...), and its colour.
    static QString statusWord(const QString &status);
    static QString statusColour(const QString &status);
    // How long the recording's disk lasts, coloured by its warning level.
    static QString diskText(const RecordingStats &file);

protected:
    void changeEvent(QEvent *event) override;

private:
    QLabel *m_label = nullptr;
    OutputStats m_stats;
    QSize m_size;
    double m_fps = 0;
};

} // namespace selvane

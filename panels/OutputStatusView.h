#pragma once

// What the outputs are doing, at a glance: encoder, size and rate, elapsed time, the recording
// (file, size, state with the reason of a failure), each encode (its profile, what it shows,
// its picture and its bitrate now and as set, amber while an adaptive bitrate has stepped it
// down), the channels recorded on their own (file and size) and each stream target's status
// and bitrate. Owns its label and the last stats shown. Shows OutputStats; decides nothing.
// GUI thread only; emits nothing.

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
    // "2 500 / 6 000 kbit/s": an encode's bitrate now and as set, thousands apart.
    static QString bitrateText(qint64 nowKbps, qint64 setKbps);

protected:
    void changeEvent(QEvent *event) override;

private:
    QLabel *m_label = nullptr;
    OutputStats m_stats;
    QSize m_size;
    double m_fps = 0;
};

} // namespace selvane
